#include <platform/com/com_thread.h>

#include <platform/com.h>

#include <atomic>
#include <climits>
#include <new>
#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace {

constinit std::atomic<unsigned long> threads_in_use{0};

struct ComThread {
    unsigned long count = 0;
    DWORD mode = 0;
    std::shared_ptr<Apartment> apartment;

    // What the first thread has goes with the process: its queue keeps the apartment.
    ~ComThread() {
        if (count && gettid() != getpid()) Leave();
    }
    void Leave() {
        count = 0;
        if (const std::shared_ptr<Apartment> last = std::exchange(apartment, nullptr)) last->Close();
        if (threads_in_use.fetch_sub(1) == 1) CoFreeUnusedLibraries();
    }
};

thread_local ComThread own;

// A forked child has no endpoint's thread, and what is listed is not its own. What it inherited of that stays
// lying; its use of COM goes on, on connections of its own.
void Begin_Anew_In_Child() {
    alignas(std::shared_ptr<Apartment>) static char lying[sizeof(std::shared_ptr<Apartment>)];
    new (lying) std::shared_ptr(std::move(own.apartment));
    threads_in_use = own.count ? 1 : 0;
}

// When the first thread ends before its process, as by ExitThread: nobody would answer its clients, and the
// endpoint's thread would keep the process. The host runs no other destructor for it then.
void End_Service_Of_First_Thread(void *) {
    if (own.apartment) own.apartment->End_Service();
}

void Note_Thread_Serves() {
    static const pthread_key_t key = [] {
        pthread_key_t made = PTHREAD_KEYS_MAX;
        pthread_key_create(&made, End_Service_Of_First_Thread);
        return made;
    }();
    if (gettid() == getpid()) pthread_setspecific(key, &own);
}

} // namespace

bool Thread_Uses_Com() {
    return own.count != 0;
}

std::shared_ptr<Apartment> Own_Apartment() {
    return own.apartment;
}

std::shared_ptr<Apartment> Own_Or_New_Apartment() {
    if (own.apartment) return own.apartment;
    own.apartment = Apartment::Begin();
    if (own.apartment) Note_Thread_Serves();
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
    static const int forks_are_noted = pthread_atfork(nullptr, nullptr, Begin_Anew_In_Child);
    if (forks_are_noted != 0) return own.count = 0, E_OUTOFMEMORY;
    own.mode = mode;
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
