#include <kelmara/shared_state/instance_share.h>

#include <kelmara/shared_state/instance_records.h>

#include <platform/errors.h>
#include <platform/kernel.h>
#include <platform/machine.h>

namespace {

constinit HANDLE g_Mapping = nullptr;
constinit HANDLE g_Mutex = nullptr;
constinit InstanceTable *g_Table = nullptr;
constinit std::atomic<bool> g_Is_Set_Up{false};

constinit std::atomic<unsigned long> Machine_Tried{0}; // whose share was asked for last; 0 for none
constinit bool Has_Failed = false;                     // what was tried last; under the turn
constinit std::atomic<DWORD> Turn_Of{0};               // the process whose thread has the turn
constinit CallsUnderWay Calls;

/// One thread at a time sets up or lets go. It waits for other processes only as long as the machine does for
/// the names of the block and the lock. A forked process takes over the turn of a thread that it has not.
class Turn {
  public:
    Turn() {
        const DWORD own = GetCurrentProcessId();
        for (DWORD before = 0; !Turn_Of.compare_exchange_strong(before, own);) {
            if (before != own) continue;
            Sleep(0);
            before = 0;
        }
    }
    ~Turn() { Turn_Of = 0; }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
};

void Close_All() {
    if (g_Mapping) CloseHandle(g_Mapping);
    if (g_Table) UnmapViewOfFile(g_Table);
    if (g_Mutex) CloseHandle(g_Mutex);
}

// `others_use_it`: then it stays open, for good.
void Let_Go(bool others_use_it) {
    g_Is_Set_Up = false;
    if (!others_use_it) Close_All();
    g_Mapping = g_Mutex = nullptr;
    g_Table = nullptr;
}

bool Open_Block(bool is_first) {
    g_Mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(InstanceTable),
                                   "INSTANCESHARE");
    // The size is asked for, so that a smaller block is refused.
    if (g_Mapping)
        g_Table = static_cast<InstanceTable *>(
            MapViewOfFile(g_Mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(InstanceTable)));
    if (g_Table && is_first) g_Table->Count = 0;
    return g_Table != nullptr;
}

// Whoever finds the lock there needs it not: a fresh block is empty as it is, and made in one step.
long Init_Instance_Share() {
    if (g_Is_Set_Up) return NO_ERROR;
    g_Mutex = CreateMutexA(nullptr, TRUE, "InstanceMasterMutex");
    if (!g_Mutex) return E_UNEXPECTED;
    const bool is_first = GetLastError() != ERROR_ALREADY_EXISTS;
    const bool opened = Open_Block(is_first);
    if (is_first) ReleaseMutex(g_Mutex);
    if (!opened) {
        Let_Go(false);
        return E_OUTOFMEMORY;
    }
    g_Is_Set_Up = true;
    return NO_ERROR;
}

bool Is_Ready_On(unsigned long machine) {
    return g_Is_Set_Up && Machine_Tried == machine;
}

InstanceShareState Make_Ready() {
    const unsigned long machine = Machine_In_Force();
    if (Is_Ready_On(machine)) return InstanceShareState::Ready;
    const Turn turn;
    if (Is_Ready_On(machine)) return InstanceShareState::Ready;
    const bool failed_before = Has_Failed && (Machine_Tried == 0 || Machine_Tried == machine);
    if (!failed_before) Let_Go(!Calls.Is_Only_One());
    Has_Failed = Init_Instance_Share() != NO_ERROR;
    Machine_Tried = Machine_In_Force();
    if (Has_Failed) return InstanceShareState::Failed;
    return failed_before ? InstanceShareState::Set_Up_Late : InstanceShareState::Ready;
}

} // namespace

void Init_Instance_Share_At_Load() {
    const unsigned long machine = Machine_In_Force();
    if (machine == 0) return;
    const DWORD last_error = GetLastError();
    Has_Failed = Init_Instance_Share() != NO_ERROR;
    Machine_Tried = machine;
    SetLastError(last_error);
}

void Release_Instance_Share() {
    const Turn turn;
    g_Is_Set_Up = false; // first: who begins a call from here on waits for the turn
    Let_Go(!Calls.Are_Over(0));
}

InstanceShareUse::InstanceShareUse() : m_Call(Calls), m_State(Make_Ready()) {}

InstanceTable *InstanceShareUse::Lock(CMutexHolder &lock) const {
    InstanceTable *table = g_Table;
    if (!table) return nullptr;
    lock.Acquire(g_Mutex, -1);
    if (!lock.Is_Held()) return nullptr;
    Put_In_Order(*table);
    return table;
}
