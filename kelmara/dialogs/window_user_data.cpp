#include <kelmara/dialogs/window_user_data.h>

#include <kelmara/foundation/memory.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <atomic>

namespace {

constexpr unsigned long Alive = 0xCAFEBEEF, Freed = 0xCDCDCDCD;
constexpr int Slot_Count = 3;
constexpr unsigned long Chain_Count = 64; // chains of live records, by their addresses
constexpr unsigned long Block_Step = 16;  // bytes from one block of the heap to the next, at least

constinit WindowUserData *Chains[Chain_Count] = {};
constinit std::atomic_flag Chains_In_Use;

/// The chains are one thread's for the length of a scope, of a few instructions and no calls.
class ChainTurn {
  public:
    ChainTurn() {
        while (Chains_In_Use.test_and_set(std::memory_order_acquire)) Sleep(0);
    }
    ~ChainTurn() { Chains_In_Use.clear(std::memory_order_release); }
    ChainTurn(const ChainTurn &) = delete;
    ChainTurn &operator=(const ChainTurn &) = delete;
};

// The link that leads to a live record; one that is null when there is none at that address.
WindowUserData **Link_To(unsigned long address) {
    WindowUserData **link = &Chains[address / Block_Step % Chain_Count];
    while (*link && reinterpret_cast<unsigned long>(*link) != address) link = &(*link)->Next;
    return link;
}

void Chain(WindowUserData *record) {
    const ChainTurn turn;
    WindowUserData **const link = Link_To(reinterpret_cast<unsigned long>(record));
    record->Next = *link;
    *link = record;
}

void Unchain(const WindowUserData *record) {
    const ChainTurn turn;
    WindowUserData **const link = Link_To(reinterpret_cast<unsigned long>(record));
    *link = record->Next;
}

WindowUserData *Live_Record(const void *wanted) {
    if (!wanted) return nullptr;
    const ChainTurn turn;
    WindowUserData *const record = *Link_To(reinterpret_cast<unsigned long>(wanted));
    return record && record->Magic == Alive ? record : nullptr;
}

unsigned long Word_Of(HWND window) {
    return static_cast<unsigned long>(GetWindowLongA(window, GWL_USERDATA));
}

// Looked at while nobody can free it: a stale word may be the address of another thread's record.
WindowUserData *Record_Of(HWND window, unsigned long word) {
    if (word == 0) return nullptr;
    const ChainTurn turn;
    WindowUserData *const record = *Link_To(word);
    return record && record->Magic == Alive && record->Window == window ? record : nullptr;
}

bool Hang_On_Window(WindowUserData *record) {
    SetWindowLongA(record->Window, GWL_USERDATA, reinterpret_cast<LONG>(record));
    return Word_Of(record->Window) == reinterpret_cast<unsigned long>(record);
}

// With nobody counted yet.
WindowUserData *Make_Record(HWND window) {
    auto *const record = static_cast<WindowUserData *>(ds_malloc(sizeof(WindowUserData)));
    if (!record) return nullptr;
    *record = {Alive, 0, {0, 0, GetWindowLongA(window, GWL_WNDPROC)}, window, nullptr};
    if (!Hang_On_Window(record)) {
        ds_free(record);
        return nullptr;
    }
    Chain(record);
    return record;
}

void Clear_Word(const WindowUserData *record) {
    const DWORD last_error = GetLastError(); // giving back leaves it as it was
    if (Word_Of(record->Window) == reinterpret_cast<unsigned long>(record))
        SetWindowLongA(record->Window, GWL_USERDATA, 0);
    SetLastError(last_error);
}

bool Is_Slot(int slot) {
    return slot >= 0 && slot < Slot_Count;
}

} // namespace

void *InsertWindowUserData(HWND window, int slot, void *value) {
    const unsigned long word = Word_Of(window);
    WindowUserData *const record = word != 0 ? Record_Of(window, word) : Make_Record(window);
    if (!record) return nullptr;
    ++record->References;
    if (Is_Slot(slot)) record->Slots[slot] = reinterpret_cast<long>(value);
    return record;
}

long GetWindowUserData(HWND window, int slot) {
    const WindowUserData *const record = Is_Slot(slot) ? Record_Of(window, Word_Of(window)) : nullptr;
    return record ? record->Slots[slot] : -1;
}

void Empty_Window_Slot(void *record, int slot, const void *value) {
    WindowUserData *const live = Live_Record(record);
    if (live && live->Slots[slot] == reinterpret_cast<long>(value)) live->Slots[slot] = 0;
}

void DeleteWindowUserData(void *record) {
    WindowUserData *const live = Live_Record(record);
    if (!live || --live->References > 0) return;
    Clear_Word(live);
    Unchain(live);
    live->Magic = Freed;
    ds_free(live);
}
