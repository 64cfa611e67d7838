#include <reference_suite/components/connection/kept_connection.h>

#include <reference_suite/components/component_object.h>

#include <platform/errors.h>
#include <platform/runtime.h>

#include <mutex>
#include <vector>

namespace {

constexpr DWORD Patience = 5000; // milliseconds

struct KeptConnection {
    std::shared_ptr<ConnectionBoard> board;
    ConnectionFate fate;
    std::uint32_t number = 0;
    OwnedHandle end; // set when it was closed

    bool Was_Closed_Within(DWORD milliseconds) const {
        return WaitForSingleObject(end.get(), milliseconds) == WAIT_OBJECT_0;
    }
    long Dial() const {
        if (Was_Closed_Within(fate.dial_time)) return Connection_Cancelled;
        if (fate.result == 0) return board->Come_Up(number) ? 0 : Connection_Cancelled;
        board->Go_Down(number);
        return fate.result;
    }
    void Stay() const {
        if (!Was_Closed_Within(fate.lost_after.value_or(INFINITE))) board->Go_Down(number);
    }
};

struct KeepingThread {
    std::uint32_t number; // of its connection
    OwnedHandle handle;
};

constinit std::mutex threads_lock;
std::vector<KeepingThread> threads; // each counts as a living object

template <bool Dialled>
unsigned Keep(void *argument) {
    const std::unique_ptr<KeptConnection> kept(static_cast<KeptConnection *>(argument));
    if (Dialled || kept->Dial() == 0) kept->Stay();
    return 0;
}

long Start(std::unique_ptr<KeptConnection> &kept, bool dialled) {
    unsigned (*const routine)(void *) = dialled ? Keep<true> : Keep<false>;
    const std::lock_guard guard(threads_lock);
    threads.reserve(threads.size() + 1);
    const std::uint32_t number = kept->number;
    OwnedHandle thread(reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, routine, kept.get(), 0, nullptr)));
    if (!thread) return E_OUTOFMEMORY;
    kept.release();
    threads.push_back({number, std::move(thread)});
    ++living_objects;
    return 0;
}

} // namespace

long Make_Connection(const std::shared_ptr<ConnectionBoard> &board, const char *configuration,
                     const char *dialled, const ConnectionFate &fate, bool wait) {
    auto kept = std::make_unique<KeptConnection>(board, fate);
    if (const long result = board->Begin(configuration, dialled, kept->number, kept->end)) return result;
    const std::uint32_t number = kept->number;
    long result = wait ? kept->Dial() : 0;
    if (result != 0) return result;
    result = Within_Memory_Of_Suite([&] { return Start(kept, wait); });
    if (result != 0) board->Go_Down(number);
    return result;
}

void Reap_Connections(std::uint32_t closed) {
    const std::lock_guard guard(threads_lock);
    living_objects -= static_cast<long>(std::erase_if(threads, [closed](const KeepingThread &thread) {
        const DWORD patience = thread.number == closed ? Patience : 0;
        return WaitForSingleObject(thread.handle.get(), patience) == WAIT_OBJECT_0;
    }));
}
