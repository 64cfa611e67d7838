#include <platform/kernel/announced_use.h>

#include <linux/membarrier.h>
#include <mutex>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

[[gnu::tls_model("initial-exec")]] constinit thread_local Announcement *own_announcement = nullptr;
constinit bool announcers_pay = true;

namespace {

// Records are never given back; an ended thread's is used by a later one.
constinit std::atomic<Announcement *> announcements{nullptr};

bool Register_For_Barriers() {
    return syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
}

bool Kernel_Has_Barrier() {
    static const bool has = Register_For_Barriers();
    return has;
}

struct GiveBackAtThreadEnd {
    ~GiveBackAtThreadEnd() {
        own_announcement->object.store(nullptr, std::memory_order_release);
        own_announcement->taken.store(false, std::memory_order_release);
        own_announcement = nullptr;
    }
};

Announcement *Unused_Announcement() {
    for (Announcement *a = announcements.load(std::memory_order_acquire); a; a = a->next) {
        bool taken = false;
        if (a->taken.compare_exchange_strong(taken, true)) return a;
    }
    auto *fresh = new (std::nothrow) Announcement;
    if (!fresh) return nullptr;
    fresh->next = announcements.load(std::memory_order_relaxed);
    while (!announcements.compare_exchange_weak(fresh->next, fresh, std::memory_order_release)) {
    }
    return fresh;
}

} // namespace

Announcement *Begin_To_Announce() {
    announcers_pay = !Kernel_Has_Barrier();
    own_announcement = Unused_Announcement();
    if (!own_announcement) return nullptr;
    static thread_local GiveBackAtThreadEnd at_end;
    (void)&at_end;
    return own_announcement;
}

bool Is_Announced(const KernelObject *object) {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    if (Kernel_Has_Barrier()) syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0);
    for (const Announcement *a = announcements.load(std::memory_order_acquire); a; a = a->next) {
        if (a->object.load(std::memory_order_acquire) == object) return true;
    }
    return false;
}
