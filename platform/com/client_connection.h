#pragma once
// The client's end of a connection: one call at a time, from any thread. It is over when the server is.
//
// A thread that serves answers its own clients also while it waits for its turn, since the call before may
// wait for it in turn. What such a client brings it to call on the same connection gets its turn first;
// within the thread's own call on the connection there is no turn to be had. Nor is one waited for long by a
// thread within another call: two of them may each have what the other waits for. It is the process's that
// made it: to a forked child the server has ended.

#include <platform/com/wire.h>
#include <platform/kernel.h>
#include <platform/kernel/file_descriptor.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <unistd.h>

class ClientConnection {
  public:
    /// To the first program that offers the class: null when none does. May throw std::bad_alloc.
    static std::shared_ptr<ClientConnection> Open(REFCLSID clsid);
    explicit ClientConnection(FileDescriptor socket);

    static constexpr DWORD Longest_Making = 30000;     // milliseconds, of an object
    static constexpr DWORD Longest_Nested_Wait = 5000; // milliseconds, for a turn within another call

    /// What the server answers, or HRESULT_SERVER_UNAVAILABLE when it had ended, HRESULT_CALL_FAILED when it
    /// ended meanwhile or answered with rubbish, CO_E_SERVER_EXEC_FAILURE when it took longer than `limit`
    /// from its turn on, RPC_E_CALL_REJECTED when its turn does not come. May throw std::bad_alloc, which
    /// ends it.
    HRESULT Call(const Frame &request, std::string &results, DWORD limit = INFINITE);
    bool Is_Over() const { return over_.load(std::memory_order_acquire) || getpid() != process_of_; }

  private:
    enum class Moment { Ready, Ended, Too_Late };
    std::unique_lock<std::mutex> Wait_For_Turn();
    HRESULT Send(const Frame &request, const class Deadline &deadline);
    HRESULT Receive(Frame &answer, const class Deadline &deadline);
    Moment Wait_For(short events, const class Deadline &deadline);

    const FileDescriptor socket_, process_; // `process_`: the server's
    const pid_t process_of_ = getpid();
    std::mutex lock_;
    std::atomic<int> caller_{0}; // the thread that has the lock
    std::atomic<bool> over_{false};
};
