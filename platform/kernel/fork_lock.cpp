#include <platform/kernel/fork_lock.h>

#include <pthread.h>

struct ForkLocks {
    static void Take_All() {
        list_lock.lock();
        for (ForkLock *each = first; each; each = each->next_) each->lock_.lock();
    }
    static void Give_All_Back() {
        for (ForkLock *each = first; each; each = each->next_) each->lock_.unlock();
        list_lock.unlock();
    }

    static constinit std::mutex list_lock;
    static constinit ForkLock *first;
};

constinit std::mutex ForkLocks::list_lock;
constinit ForkLock *ForkLocks::first = nullptr;

ForkLock::ForkLock() {
    [[maybe_unused]] static const int told =
        pthread_atfork(ForkLocks::Take_All, ForkLocks::Give_All_Back, ForkLocks::Give_All_Back);
    const std::lock_guard guard(ForkLocks::list_lock);
    next_ = ForkLocks::first;
    ForkLocks::first = this;
}
