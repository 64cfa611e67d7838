#pragma once
// A call on an object that costs no locked instruction (a hazard pointer): each thread announces in a record
// of its own what it is about to use, and whoever wants to take an object away asks all records.
//
// The announcing thread only stores and loads, in that order. What makes this safe is the other side, which
// has the kernel put a barrier into every running thread of the process before it looks: an announcement made
// before it is seen, and one made after it finds the handle gone. Where the kernel has no such barrier the
// announcing thread pays for its own.

#include <platform/kernel/handle_table.h>

struct Announcement {
    std::atomic<const KernelObject *> object{nullptr};
    std::atomic<bool> taken{true}; // by a living thread
    Announcement *next = nullptr;
};

[[gnu::tls_model("initial-exec")]] extern constinit thread_local Announcement *own_announcement;
extern bool announcers_pay;        // set before the first announcement
Announcement *Begin_To_Announce(); // null when memory runs out

inline void Order_Announcement() {
    if (announcers_pay) [[unlikely]]
        std::atomic_thread_fence(std::memory_order_seq_cst);
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

/// One at a time in a thread. Empty when the handle is not open or names an object of another kind, and when
/// there is no memory for a thread's first one: the way that counts serves then. Whoever
/// ends one asks afterwards whether the object waits to be taken away: that is the last moment.
class AnnouncedUse {
  public:
    AnnouncedUse(const void *handle, ObjectKind kind) {
        const HandleSlot *slot = Slot_Of(handle);
        KernelObject *object = slot ? Peek_Slot(*slot, kind) : nullptr;
        if (!object) return;
        own_ = own_announcement;
        if (!own_) [[unlikely]]
            own_ = Begin_To_Announce();
        if (!own_) [[unlikely]]
            return;
        own_->object.store(object, std::memory_order_relaxed);
        Order_Announcement();
        if (Peek_Slot(*slot, kind) == object)
            object_ = object;
        else
            own_->object.store(nullptr, std::memory_order_release);
    }
    ~AnnouncedUse() { End(); }
    AnnouncedUse(const AnnouncedUse &) = delete;
    AnnouncedUse &operator=(const AnnouncedUse &) = delete;

    KernelObject *Get() const { return object_; }

    void End() {
        if (!object_) return;
        object_ = nullptr;
        own_->object.store(nullptr, std::memory_order_release);
        Order_Announcement();
    }

  private:
    Announcement *own_ = nullptr;
    KernelObject *object_ = nullptr;
};

/// For a caller who has made sure that no new use can begin: true while a thread is using the object.
bool Is_Announced(const KernelObject *object);
