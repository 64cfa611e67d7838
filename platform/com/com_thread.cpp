#include <platform/com/com_thread.h>

#include <platform/com.h>

#include <atomic>
#include <unistd.h>
#include <utility>

namespace {

constinit std::atomic<unsigned long> threads_in_use{0};

struct ComThread {
    unsigned long count = 0;
    DWORD mode = 0;
    pid_t process = 0; // a forked child has a copy
    std::shared_ptr<Apartment> apartment;

    // What the first thread has goes with the process: its queue keeps the apartment. But the thread may end
    // before, and nobody would answer its clients then.
    ~ComThread() {
        if (count && gettid() != getpid())
            Leave();
        else if (apartment && process == getpid())
            apartment->End_Service();
    }
    void Leave() {
        count = 0;
        if (const std::shared_ptr<Apartment> last = std::exchange(apartment, nullptr)) last->Close();
        if (threads_in_use.fetch_sub(1) == 1) CoFreeUnusedLibraries();
    }
};

thread_local ComThread own;

} // namespace

bool Thread_Uses_Com() {
    return own.count != 0;
}

std::shared_ptr<Apartment> Own_Apartment() {
    return own.apartment;
}

std::shared_ptr<Apartment> Own_Or_New_Apartment() {
    if (!own.apartment) own.apartment = Apartment::Begin();
    return own.apartment;
}

extern "C" {

HRESULT CoInitialize(void *reserved) {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

HRESULT CoInitializeEx(void *reserved, DWORD mode) {
    if (reserved || (mode & ~COINIT_APARTMENTTHREADED)) return E_INVALIDARG;
    if (own.count && own.mode != mode) return RPC_E_CHANGED_MODE;
    if (own.count++) return S_FALSE;
    own.mode = mode;
    own.process = getpid();
    threads_in_use.fetch_add(1);
    return S_OK;
}

void CoUninitialize() {
    if (own.count == 0) return;
    if (own.count == 1)
        own.Leave();
    else
        --own.count;
}
}
