// Mutexes: a robust, recursive lock of the host in a block that the processes of the machine share.
//
// The host's kernel keeps the list of robust locks that each thread holds, and marks them when the thread or
// its process ends; the next waiter is told and puts the lock in order. Should it end before that, the one
// after it is told the same.
//
// Waiting and releasing are the fast path of every shared table, so neither counts itself in at the object
// unless it has to wait. An object is never given back to the heap: it is put aside and used again. What must
// not happen is that the shared page goes away under a thread of this process that is taking the lock
// (AnnouncedUse tells), or owns it, with the kernel's list leading through the page. An object whose last
// handle closes meanwhile lingers until that thread lets go or has ended.

#include <platform/kernel/announced_use.h>
#include <platform/kernel/named_objects.h>
#include <platform/kernel/robust_lock.h>
#include <platform/kernel/waiting.h>

#include <platform/kernel.h>

#include <cerrno>
#include <mutex>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

// Numbers of threads are never used again, as the host's are.
constinit std::atomic<unsigned> last_thread_number{0};
[[gnu::tls_model("initial-exec")]] constinit thread_local unsigned own_thread_number = 0;

unsigned This_Thread() {
    if (own_thread_number == 0) [[unlikely]]
        own_thread_number = ++last_thread_number;
    return own_thread_number;
}

class MutexObject final : public NamedObject {
  public:
    MutexObject() : NamedObject(ObjectKind::Mutex) {}

    /// By the host's own way, which also wakes the next when who was woken is killed before it has the lock.
    DWORD Wait(DWORD milliseconds) override;
    DWORD Try() override;
    DWORD Look(WaitSpot &spot) override;
    DWORD Leave(WaitSpot &spot, bool wanted) override;
    BOOL Release_By_Owner();
    /// The lock was taken by this thread while the block was made.
    void Begin_As_Owner();
    void Finish_If_Lingering() {
        if (lingering_.load(std::memory_order_acquire)) [[unlikely]]
            Finish();
    }

    static NamedObject *Make(std::unique_ptr<SharedBlock> block);
    static void Sweep_Lingering();

  private:
    ~MutexObject() override = default;
    void Last_Released() override;
    void Let_Name_Go() override { block_->Let_Name_Go_If_Last(SharedBlock::Patience::Give_Up); }
    static MutexObject *Take_Aside_Or_New();
    void Take(std::unique_ptr<SharedBlock> block, pthread_mutex_t *lock);
    DWORD Outcome(int locked);
    [[gnu::noinline]] DWORD Unusual_Outcome(int locked);
    bool In_Use_By_This_Process() const;
    void Finish();

    std::unique_ptr<SharedBlock> block_;
    pthread_mutex_t *lock_ = nullptr; // in the block
    // Written by the owner alone. Another thread reads it only to find that it is not the owner.
    std::atomic<unsigned> owner_{0};
    unsigned depth_ = 0;
    std::atomic<bool> lingering_{false};
};

struct Shelf {
    std::mutex lock;
    std::vector<MutexObject *> aside;     // to be used again
    std::vector<MutexObject *> lingering; // closed, but owned by a thread of this process when last seen
    std::size_t objects = 0;              // all there are; both lists have room for them

    void Make_Room_For_One_More() {
        aside.reserve(objects + 1);
        lingering.reserve(objects + 1);
    }
};

Shelf &The_Shelf() {
    static Shelf *shelf = new Shelf;
    return *shelf;
}

void Prepare_Lock(void *contents) {
    Make_Robust_Lock(*static_cast<pthread_mutex_t *>(contents), PTHREAD_MUTEX_RECURSIVE);
}

void Take_Prepared_Lock(void *contents) {
    pthread_mutex_lock(static_cast<pthread_mutex_t *>(contents));
}

DWORD MutexObject::Outcome(int locked) {
    if (locked == 0) [[likely]] {
        if (owner_.load(std::memory_order_relaxed) != This_Thread()) depth_ = 0;
        owner_.store(This_Thread(), std::memory_order_relaxed);
        ++depth_;
        return WAIT_OBJECT_0;
    }
    return Unusual_Outcome(locked);
}

DWORD MutexObject::Unusual_Outcome(int locked) {
    switch (locked) {
    case EOWNERDEAD:
        pthread_mutex_consistent(lock_);
        owner_.store(This_Thread(), std::memory_order_relaxed);
        depth_ = 1;
        return WAIT_ABANDONED;
    case EBUSY:
    case ETIMEDOUT:
        return WAIT_TIMEOUT;
    default:
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
}

DWORD MutexObject::Try() {
    return Outcome(pthread_mutex_trylock(lock_));
}

// In rounds: a wait for several objects that was woken may have been stopped or killed before it woke
// another.
DWORD MutexObject::Wait(DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (;;) {
        const long long left = deadline.Left();
        const timespec limit = Time_After(static_cast<DWORD>(std::min(left, Round_Milliseconds)));
        const int locked = pthread_mutex_clocklock(lock_, CLOCK_MONOTONIC, &limit);
        if (locked != ETIMEDOUT || left <= Round_Milliseconds) return Outcome(locked);
    }
}

DWORD MutexObject::Look(WaitSpot &spot) {
    for (;;) {
        const DWORD result = Try();
        const bool owned = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
        if (owned && spot.sleep.word) Word_Of(*lock_).fetch_or(FUTEX_WAITERS);
        if (result != WAIT_TIMEOUT || Announce_Sleeper(*lock_, spot.sleep)) return result;
    }
}

DWORD MutexObject::Leave(WaitSpot &spot, bool) {
    if (spot.sleep.word) Wake_One(*spot.sleep.word);
    return WAIT_TIMEOUT;
}

BOOL MutexObject::Release_By_Owner() {
    if (owner_.load(std::memory_order_relaxed) != This_Thread()) {
        SetLastError(ERROR_NOT_OWNER);
        return FALSE;
    }
    // From the unlock on, nothing of the shared page may be touched.
    const bool last = --depth_ == 0;
    if (last) owner_.store(0, std::memory_order_relaxed);
    if (pthread_mutex_unlock(lock_) != 0) {
        owner_.store(0, std::memory_order_relaxed);
        SetLastError(ERROR_NOT_OWNER);
        return FALSE;
    }
    if (last) Finish_If_Lingering();
    return TRUE;
}

// The lock's word holds the number of the thread that owns it, of whatever process. It is read after the
// announcements: a thread takes the lock before it ends its own.
bool MutexObject::In_Use_By_This_Process() const {
    if (Is_Announced(this)) return true;
    const std::uint32_t thread = Word_Of(*lock_).load() & FUTEX_TID_MASK;
    if (thread == 0) return false;
    return syscall(SYS_tgkill, getpid(), thread, 0) == 0;
}

NamedObject *MutexObject::Make(std::unique_ptr<SharedBlock> block) {
    auto *lock = static_cast<pthread_mutex_t *>(block->Contents());
    if (!lock || block->Size() < sizeof(pthread_mutex_t)) return nullptr;
    try {
        MutexObject *object = Take_Aside_Or_New();
        object->Take(std::move(block), lock);
        return object;
    } catch (const std::bad_alloc &) {
        pthread_mutex_unlock(lock); // of whoever made it, to own it: the block goes next
        throw;
    }
}

MutexObject *MutexObject::Take_Aside_Or_New() {
    Shelf &shelf = The_Shelf();
    std::lock_guard guard(shelf.lock);
    if (shelf.aside.empty()) {
        shelf.Make_Room_For_One_More();
        auto *fresh = new MutexObject;
        ++shelf.objects;
        return fresh;
    }
    MutexObject *object = shelf.aside.back();
    shelf.aside.pop_back();
    object->Retain();
    return object;
}

void MutexObject::Take(std::unique_ptr<SharedBlock> block, pthread_mutex_t *lock) {
    block_ = std::move(block);
    lock_ = lock;
    owner_.store(0, std::memory_order_relaxed);
    depth_ = 0;
    lingering_.store(false, std::memory_order_relaxed);
}

void MutexObject::Begin_As_Owner() {
    owner_.store(This_Thread(), std::memory_order_relaxed);
    depth_ = 1;
}

// The name goes with the last handle; the page stays for a thread that owns the lock.
void MutexObject::Last_Released() {
    Forget_Name();
    block_->Let_Name_Go_If_Last();
    Shelf &shelf = The_Shelf();
    std::unique_lock guard(shelf.lock);
    lingering_.store(true, std::memory_order_seq_cst);
    shelf.lingering.push_back(this);
    guard.unlock();
    Finish();
}

// Only what is in the list is finished, and only once: two threads may come to it at the same time.
void MutexObject::Finish() {
    Shelf &shelf = The_Shelf();
    std::unique_lock guard(shelf.lock);
    for (std::size_t i = 0; i < shelf.lingering.size(); ++i) {
        if (shelf.lingering[i] != this) continue;
        if (In_Use_By_This_Process()) return;
        shelf.lingering.erase(shelf.lingering.begin() + static_cast<std::ptrdiff_t>(i));
        lingering_.store(false, std::memory_order_relaxed);
        std::unique_ptr<SharedBlock> block = std::move(block_);
        lock_ = nullptr;
        owner_.store(0, std::memory_order_relaxed);
        shelf.aside.push_back(this);
        guard.unlock();
        return; // the block goes here, outside the shelf's lock
    }
}

// Objects whose owner ended without a release. Those that there is no memory to look at wait for another
// call.
void MutexObject::Sweep_Lingering() try {
    std::vector<MutexObject *> waiting;
    {
        Shelf &shelf = The_Shelf();
        std::lock_guard guard(shelf.lock);
        waiting = shelf.lingering;
    }
    for (MutexObject *object : waiting) object->Finish();
} catch (const std::bad_alloc &) {
}

} // namespace

extern "C" {

HANDLE CreateMutexA(const SECURITY_ATTRIBUTES *, BOOL initial_owner, LPCSTR name) {
    MutexObject::Sweep_Lingering();
    bool fresh = false;
    const HANDLE handle = NamedObjects::Open(
        ObjectKind::Mutex, SharedBlockKind::Mutex, name, sizeof(pthread_mutex_t),
        {Prepare_Lock, initial_owner ? Take_Prepared_Lock : nullptr}, MutexObject::Make, &fresh);
    if (handle && fresh && initial_owner) {
        const HandleUse use(handle, ObjectKind::Mutex);
        if (use) use.As<MutexObject>().Begin_As_Owner();
    }
    return handle;
}

// Mutexes come first, by a way that counts nothing in; everything else, and a mutex that has to be waited
// for, behind it.
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    AnnouncedUse quick(handle, ObjectKind::Mutex);
    auto *mutex = static_cast<MutexObject *>(quick.Get());
    if (!mutex) [[unlikely]]
        return Wait_By_Kind(handle, milliseconds);
    const DWORD result = mutex->Try();
    quick.End();
    mutex->Finish_If_Lingering();
    if (result != WAIT_TIMEOUT || milliseconds == 0) return result;
    return Wait_By_Kind(handle, milliseconds);
}

BOOL ReleaseMutex(HANDLE mutex) {
    auto *object = static_cast<MutexObject *>(Peek_Handle(mutex, ObjectKind::Mutex));
    if (!object) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return object->Release_By_Owner();
}
}
