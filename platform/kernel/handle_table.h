#pragma once
// What stands behind a handle, and the process's table of open handles.
//
// An object lives as long as a handle to it is open or a call is under way on it. Slots and the table's
// chunks are never given back to the heap, so that a stale handle can be looked at safely; it is refused.

#include <platform/kernel.h>
#include <platform/kernel/sleep_word.h>

#include <utility>

enum class ObjectKind : unsigned char {
    Mutex = 1,
    Mapping = 2,
    RegistryKey = 3,
    Find = 4,
    Process = 5,
    Thread = 6,
    Token = 7,
    Event = 8,
};

/// What a wait has at an object while it sleeps.
struct WaitSpot {
    SleepWord sleep;       // with no word the object is to be looked at every while
    void *place = nullptr; // the object's own
};

/// Base of everything that a handle can name. Counted by the handles to it and by whoever else holds it.
/// Aligned so that the kind fits into the low bits of its address.
class alignas(16) KernelObject {
  public:
    explicit KernelObject(ObjectKind kind) : kind_(kind) {}
    KernelObject(const KernelObject &) = delete;
    KernelObject &operator=(const KernelObject &) = delete;

    ObjectKind Kind() const { return kind_; }

    void Retain() { references_.fetch_add(1, std::memory_order_relaxed); }
    /// False when the last holder has let go already and the object is on its way out.
    bool Retain_If_Alive();
    void Release();

    /// What WaitForSingleObject does, by the three that follow unless a kind knows better.
    virtual DWORD Wait(DWORD milliseconds);
    /// Takes the object if it is to be had at once: WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT. The default
    /// is for what cannot be waited for: WAIT_FAILED and ERROR_INVALID_HANDLE.
    virtual DWORD Try();
    /// Try, before and after each sleep of a wait. With WAIT_TIMEOUT the wait stands in line at the object,
    /// and `spot` says what to sleep on; WAIT_OBJECT_0 and WAIT_ABANDONED have ended that.
    virtual DWORD Look(WaitSpot &spot) {
        spot.sleep = {};
        return Try();
    }
    /// Ends a stay in line. WAIT_TIMEOUT; or, `wanted`, WAIT_OBJECT_0 for an object that came at the last
    /// moment. Unwanted, it goes to whoever is next.
    virtual DWORD Leave(WaitSpot &, [[maybe_unused]] bool wanted) { return WAIT_TIMEOUT; }

  protected:
    virtual ~KernelObject() = default;
    /// Runs when the last holder lets go. The default deletes the object.
    virtual void Last_Released() { delete this; }

  private:
    std::atomic<unsigned> references_{1};
    const ObjectKind kind_;
};

struct HandleSlot {
    // Bit 31: open. Below it: calls under way, plus one while it is open. At 0 the object is let go and the
    // slot goes back to the free ones.
    std::atomic<unsigned> state{0};
    std::atomic<std::uintptr_t> object{0}; // address and kind of the object, read in one go
    HandleSlot *next_free = nullptr;
    unsigned index = 0;
};

/// A call under way on a handle: while it lives the object cannot go. Empty when the handle is not open, or
/// names an object of another kind than the one asked for.
class HandleUse {
  public:
    explicit HandleUse(const void *handle);
    HandleUse(const void *handle, ObjectKind kind);
    ~HandleUse();
    HandleUse(const HandleUse &) = delete;
    HandleUse &operator=(const HandleUse &) = delete;

    explicit operator bool() const { return object_ != nullptr; }
    KernelObject &Object() const { return *object_; }
    template <class Object>
    Object &As() const {
        return static_cast<Object &>(*object_);
    }

  private:
    HandleSlot *slot_ = nullptr;
    KernelObject *object_ = nullptr;
};

/// A new handle to `object`, which takes over the caller's hold of it. Null, with the hold let go and
/// ERROR_NOT_ENOUGH_QUOTA, when the table is full.
HANDLE Open_Handle(KernelObject *object);

/// Closes a handle to an object of that kind; false when it is no such handle. Calls under way on it finish.
bool Close_Handle_Of_Kind(const void *handle, ObjectKind kind);

inline constexpr unsigned Slots_Per_Chunk = 1024;
inline constexpr unsigned Most_Chunks = 1024;
inline constexpr unsigned Open_Bit = 0x80000000u;
inline constexpr std::uintptr_t Kind_Mask = alignof(KernelObject) - 1;

/// The table: chunks of slots, filled from the front. Handles are 4, 8, 12 and so on; slot 0 is handle 4.
extern std::atomic<HandleSlot *> handle_chunks[Most_Chunks];

inline HandleSlot *Slot_Of(const void *handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::uintptr_t index = value / 4 - 1; // of null: beyond the table
    if (value % 4 != 0 || index >= Slots_Per_Chunk * Most_Chunks) return nullptr;
    HandleSlot *chunk = handle_chunks[index / Slots_Per_Chunk].load(std::memory_order_acquire);
    return chunk ? &chunk[index % Slots_Per_Chunk] : nullptr;
}

/// The object without holding on to it, for kinds whose objects are never given back to the heap: null when
/// the handle is not open or of another kind.
inline KernelObject *Peek_Slot(const HandleSlot &slot, ObjectKind kind) {
    const std::uintptr_t object = slot.object.load(std::memory_order_acquire);
    const bool open = slot.state.load(std::memory_order_acquire) & Open_Bit;
    if (!open || (object & Kind_Mask) != static_cast<std::uintptr_t>(kind)) return nullptr;
    return reinterpret_cast<KernelObject *>(object & ~Kind_Mask);
}

inline KernelObject *Peek_Handle(const void *handle, ObjectKind kind) {
    const HandleSlot *slot = Slot_Of(handle);
    return slot ? Peek_Slot(*slot, kind) : nullptr;
}
