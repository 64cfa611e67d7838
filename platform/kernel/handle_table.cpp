#include <platform/kernel/handle_table.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <mutex>
#include <new>

constinit std::atomic<HandleSlot *> handle_chunks[Most_Chunks];

namespace {

constinit std::atomic<unsigned long> open_handles{0};

// Guards the free slots. They are used again first in, first out, so that a stale handle stays refused for
// as long as can be.
constinit std::mutex free_lock;
constinit HandleSlot *first_free = nullptr;
constinit HandleSlot *last_free = nullptr;
constinit unsigned chunk_count = 0;

void Append_Free(HandleSlot *slot) {
    slot->next_free = nullptr;
    if (last_free)
        last_free->next_free = slot;
    else
        first_free = slot;
    last_free = slot;
}

bool Add_Chunk() {
    if (chunk_count == Most_Chunks) return false;
    auto *chunk = new (std::nothrow) HandleSlot[Slots_Per_Chunk];
    if (!chunk) return false;
    for (unsigned i = 0; i < Slots_Per_Chunk; ++i) {
        chunk[i].index = chunk_count * Slots_Per_Chunk + i;
        Append_Free(&chunk[i]);
    }
    handle_chunks[chunk_count++].store(chunk, std::memory_order_release);
    return true;
}

HandleSlot *Take_Free_Slot() {
    std::lock_guard guard(free_lock);
    if (!first_free && !Add_Chunk()) return nullptr;
    HandleSlot *slot = first_free;
    first_free = slot->next_free;
    if (!first_free) last_free = nullptr;
    return slot;
}

HANDLE Handle_Of(const HandleSlot &slot) {
    return reinterpret_cast<HANDLE>((slot.index + 1) * 4);
}

std::uintptr_t Tagged(KernelObject *object) {
    return reinterpret_cast<std::uintptr_t>(object) | static_cast<std::uintptr_t>(object->Kind());
}

KernelObject *Untagged(std::uintptr_t tagged) {
    return reinterpret_cast<KernelObject *>(tagged & ~Kind_Mask);
}

void Drop_Use(HandleSlot *slot) {
    if (slot->state.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    KernelObject *object = Untagged(slot->object.exchange(0, std::memory_order_relaxed));
    {
        std::lock_guard guard(free_lock);
        Append_Free(slot);
    }
    object->Release();
}

bool Take_Use(HandleSlot *slot) {
    unsigned state = slot->state.load(std::memory_order_relaxed);
    do {
        if (!(state & Open_Bit)) return false;
    } while (!slot->state.compare_exchange_weak(state, state + 1, std::memory_order_acquire));
    return true;
}

// Takes the open bit away and leaves the use that stood for it to the caller.
bool Begin_Close(HandleSlot *slot) {
    unsigned state = slot->state.load(std::memory_order_relaxed);
    do {
        if (!(state & Open_Bit)) return false;
    } while (!slot->state.compare_exchange_weak(state, state & ~Open_Bit, std::memory_order_acq_rel));
    open_handles.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

bool Close_Any_Handle(const void *handle) {
    HandleSlot *slot = Slot_Of(handle);
    if (!slot || !Begin_Close(slot)) return false;
    Drop_Use(slot);
    return true;
}

} // namespace

bool KernelObject::Retain_If_Alive() {
    unsigned count = references_.load(std::memory_order_relaxed);
    do {
        if (count == 0) return false;
    } while (!references_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed));
    return true;
}

void KernelObject::Release() {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) Last_Released();
}

HandleUse::HandleUse(const void *handle) {
    HandleSlot *slot = Slot_Of(handle);
    if (!slot || !Take_Use(slot)) return;
    slot_ = slot;
    object_ = Untagged(slot->object.load(std::memory_order_relaxed));
}

HandleUse::HandleUse(const void *handle, ObjectKind kind) : HandleUse(handle) {
    if (!slot_ || object_->Kind() == kind) return;
    Drop_Use(slot_);
    slot_ = nullptr;
    object_ = nullptr;
}

HandleUse::~HandleUse() {
    if (slot_) Drop_Use(slot_);
}

HANDLE Open_Handle(KernelObject *object) {
    HandleSlot *slot = Take_Free_Slot();
    if (!slot) {
        object->Release();
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return nullptr;
    }
    slot->object.store(Tagged(object), std::memory_order_relaxed);
    slot->state.store(Open_Bit | 1, std::memory_order_release);
    open_handles.fetch_add(1, std::memory_order_relaxed);
    return Handle_Of(*slot);
}

bool Close_Handle_Of_Kind(const void *handle, ObjectKind kind) {
    HandleUse use(handle, kind);
    return use && Close_Any_Handle(handle);
}

extern "C" {

BOOL CloseHandle(HANDLE handle) {
    const bool has_its_own_call = Peek_Handle(handle, ObjectKind::Find);
    if (!has_its_own_call && Close_Any_Handle(handle)) return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

unsigned long Open_Handle_Count() {
    return open_handles.load(std::memory_order_relaxed);
}
}
