#pragma once
// A process of the host behind a handle: one that this process has started, or another's.
//
// What is waited for is the host's descriptor of the process, so that its number may be used again meanwhile.
// The exit code of a process that was started here is taken from the host once, by whoever comes to it first;
// until then the host keeps the process's remains.

#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/thread_object.h>

#include <mutex>
#include <optional>
#include <sys/types.h>

enum class Origin { StartedHere, Elsewhere };

class ProcessObject final : public KernelObject {
  public:
    ProcessObject(pid_t id, FileDescriptor descriptor, Origin origin)
        : KernelObject(ObjectKind::Process), id_(id), descriptor_(std::move(descriptor)), origin_(origin) {}
    /// One that is yet to be started here; Begin completes it before anybody else knows of it.
    ProcessObject() : ProcessObject(0, FileDescriptor(), Origin::StartedHere) {}
    void Begin(pid_t id, FileDescriptor descriptor) {
        id_ = id;
        descriptor_ = std::move(descriptor);
    }

    pid_t Id() const { return id_; }
    bool Was_Started_Here() const { return origin_ == Origin::StartedHere; }
    /// Readable from the process's end on.
    int Descriptor() const { return descriptor_.Get(); }

    /// A process that a debugger of the host holds on to after its end has not ended yet. WAIT_FAILED, with
    /// the reason as the last error, when the host cannot wait.
    DWORD Wait(DWORD milliseconds) override;
    DWORD Try() override { return Has_Ended() ? WAIT_OBJECT_0 : WAIT_TIMEOUT; }
    DWORD Look(WaitSpot &spot) override;
    DWORD Leave(WaitSpot &spot, bool wanted) override;
    /// Asks the host, and takes the exit code when it is to be had.
    bool Has_Ended();
    /// Codes of errors.h, as GetExitCodeProcess and TerminateProcess tell them.
    long Find_Exit_Code(DWORD &code);
    long Terminate(DWORD code);

  private:
    ~ProcessObject() override = default;
    bool Take_Exit_Code();

    pid_t id_;
    FileDescriptor descriptor_;
    const Origin origin_;

    std::mutex lock_; // of what follows
    std::atomic<std::uint32_t> ended_{0};
    std::optional<DWORD> exit_code_;
    std::optional<DWORD> terminated_with_;
};

/// The thread that a started process began with, as far as it can be told from outside: it lasts as long.
class FirstThread final : public ThreadObject {
  public:
    /// Holds on to the process.
    explicit FirstThread(ProcessObject &process) : process_(process) { process_.Retain(); }
    DWORD Wait(DWORD milliseconds) override { return process_.Wait(milliseconds); }
    DWORD Try() override { return process_.Try(); }
    DWORD Look(WaitSpot &spot) override { return process_.Look(spot); }
    DWORD Leave(WaitSpot &spot, bool wanted) override { return process_.Leave(spot, wanted); }
    long Find_Exit_Code(DWORD &code) override { return process_.Find_Exit_Code(code); }

  private:
    ~FirstThread() override { process_.Release(); }

    ProcessObject &process_;
};

/// True for what GetCurrentProcess gives.
inline bool Is_Current_Process(HANDLE handle) {
    return handle == INVALID_HANDLE_VALUE;
}
