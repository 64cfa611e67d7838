// Threads that this process starts. Each holds a robust lock from its first step on and never gives it up:
// the host's kernel marks it when the thread has ended, behind all other locks that it held, and wakes who
// waits.
//
// Where the lock lies must stay until then, whoever closes the handle: the places are kept, and used again
// once their thread has ended and nobody has a handle to it.

#include <platform/kernel/fork_lock.h>
#include <platform/kernel/outcome.h>
#include <platform/kernel/robust_lock.h>
#include <platform/kernel/thread_object.h>
#include <platform/kernel/waiting.h>

#include <deque>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace {

struct ThreadLife {
    ThreadLife() { Make_Robust_Lock(lock); }
    bool Is_On() { return Is_Held(Word_Of(lock).load(std::memory_order_acquire)); }

    pthread_mutex_t lock;
    std::atomic<std::uint32_t> number{0}; // from when it has the lock
    std::atomic<DWORD> exit_code{0};
    bool has_handle = false; // under the lock of all
};

struct Lives {
    ForkLock lock;
    std::deque<ThreadLife> all;
};

Lives &The_Lives() {
    static auto *lives = new Lives;
    return *lives;
}

[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadLife *own_life = nullptr;

ThreadLife &Take_Life() {
    Lives &lives = The_Lives();
    const std::lock_guard guard(lives.lock);
    for (ThreadLife &each : lives.all) {
        if (each.has_handle || each.Is_On()) continue;
        each.number = 0;
        each.has_handle = true;
        return each;
    }
    lives.all.emplace_back().has_handle = true;
    return lives.all.back();
}

class StartedThread final : public ThreadObject {
  public:
    StartedThread() : life_(Take_Life()) {}
    DWORD Try() override { return Has_Ended() ? WAIT_OBJECT_0 : WAIT_TIMEOUT; }
    DWORD Look(WaitSpot &spot) override;
    DWORD Leave(WaitSpot &spot, bool wanted) override;
    long Find_Exit_Code(DWORD &code) override;
    ThreadLife &Life() { return life_; }

  private:
    ~StartedThread() override {
        const std::lock_guard guard(The_Lives().lock);
        life_.has_handle = false;
    }
    bool Has_Ended() { return !life_.Is_On(); }

    ThreadLife &life_;
};

// The host wakes one sleeper, and that one the others.
DWORD StartedThread::Look(WaitSpot &spot) {
    if (Announce_Sleeper(life_.lock, spot.sleep)) return WAIT_TIMEOUT;
    Leave(spot, false);
    return WAIT_OBJECT_0;
}

DWORD StartedThread::Leave(WaitSpot &spot, bool) {
    if (spot.sleep.word && Has_Ended()) Wake_All(*spot.sleep.word);
    return WAIT_TIMEOUT;
}

long StartedThread::Find_Exit_Code(DWORD &code) {
    code = Has_Ended() ? life_.exit_code.load(std::memory_order_acquire) : STILL_ACTIVE;
    return NO_ERROR;
}

// What the starter tells the new thread, gone when that one's number is known.
struct Beginning {
    ThreadRoutine routine;
    void *argument;
    ThreadLife &life;
};

// What the routine throws ends the process; the end by ExitThread passes through.
void *Run(void *given) {
    const Beginning beginning = *static_cast<Beginning *>(given);
    ThreadLife &life = beginning.life;
    own_life = &life;
    Owns_After(pthread_mutex_lock(&life.lock), life.lock);
    life.exit_code = 0;
    life.number = static_cast<std::uint32_t>(gettid());
    Wake_All(life.number);
    life.exit_code = beginning.routine(beginning.argument);
    return nullptr;
}

class Attributes {
  public:
    explicit Attributes(std::size_t stack_size) {
        pthread_attr_init(&attributes_);
        pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_DETACHED);
        constexpr std::size_t Page = 4096, Least = 64 * 1024;
        if (stack_size == 0) return;
        const std::size_t whole = (std::max(stack_size, Least) + Page - 1) / Page * Page;
        usable_ = pthread_attr_setstacksize(&attributes_, whole) == 0;
    }
    ~Attributes() { pthread_attr_destroy(&attributes_); }
    Attributes(const Attributes &) = delete;
    Attributes &operator=(const Attributes &) = delete;
    bool Usable() const { return usable_; }
    const pthread_attr_t *Get() const { return &attributes_; }

  private:
    pthread_attr_t attributes_;
    bool usable_ = true;
};

} // namespace

HANDLE Start_Thread(std::size_t stack_size, ThreadRoutine routine, void *argument, unsigned &id,
                    long &error) try {
    const Attributes attributes(stack_size);
    error = attributes.Usable() ? NO_ERROR : ERROR_INVALID_PARAMETER;
    if (error != NO_ERROR) return nullptr;
    auto *const object = new StartedThread;
    ThreadLife &life = object->Life();
    Beginning beginning = {routine, argument, life};
    const HANDLE handle = Open_Handle(object);
    if (!handle) {
        error = ERROR_NOT_ENOUGH_QUOTA;
        return nullptr;
    }
    pthread_t thread;
    if (pthread_create(&thread, attributes.Get(), Run, &beginning) != 0) {
        CloseHandle(handle);
        error = ERROR_NOT_ENOUGH_MEMORY;
        return nullptr;
    }
    const SleepWord number = {&life.number, 0};
    while (!number.Has_Moved()) Sleep_On(&number, 1, Round_Milliseconds);
    id = *number.word;
    return handle;
} catch (const std::bad_alloc &) {
    error = ERROR_NOT_ENOUGH_MEMORY;
    return nullptr;
}

void Keep_Exit_Code(DWORD code) {
    if (own_life) own_life->exit_code = code;
}

extern "C" {

BOOL GetExitCodeThread(HANDLE thread, DWORD *exit_code) {
    const HandleUse use(thread, ObjectKind::Thread);
    return Succeed_Or_Tell(use ? use.As<ThreadObject>().Find_Exit_Code(*exit_code) : ERROR_INVALID_HANDLE);
}

void ExitThread(DWORD code) {
    Keep_Exit_Code(code);
    pthread_exit(nullptr);
}
}
