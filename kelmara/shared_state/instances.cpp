#include <kelmara/shared_state/instances.h>

#include <kelmara/shared_state/instance_records.h>
#include <kelmara/shared_state/instance_share.h>
#include <kelmara/shared_state/log.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstdint>

namespace {

constexpr DWORD Longest_Wait_For_Idle = 3000; // milliseconds
constexpr int Title_Room = Instance_Text_Size - 1;

unsigned Number_Of(HWND window) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(window));
}

void Wait_For_Program_Of(HWND window) {
    DWORD process_id = 0;
    GetWindowThreadProcessId(window, &process_id);
    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, TRUE, process_id);
    if (!process) return;
    WaitForInputIdle(process, Longest_Wait_For_Idle);
    CloseHandle(process);
}

void Read_Title(HWND window, InstanceText &title) {
    Wait_For_Program_Of(window);
    GetWindowTextA(window, title, Title_Room);
}

bool Is_Live(const InstanceRecord &record) {
    InstanceText title = {};
    Read_Title(record.Window, title);
    return Has_Title(record, title);
}

void Bring_To_Front(HWND window) {
    const HWND popup = GetLastActivePopup(window);
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    if (IsWindowVisible(popup)) SetForegroundWindow(popup);
}

// The first live record of the keys; null when there is none, and then the others of the keys are removed.
const InstanceRecord *Find_Live(InstanceTable &table, const InstanceKeys &keys) {
    for (long index = 0; index < Count_Of(table);) {
        const InstanceRecord &record = table.Records[index];
        if (!Has_Keys(record, keys)) {
            ++index;
            continue;
        }
        if (IsWindow(record.Window) && Is_Live(record)) return &record;
        Remove_Record(table, index);
    }
    return nullptr;
}

// Removes records of windows that are gone, but not those whose title has changed.
bool Has_Live(InstanceTable &table, const InstanceKeys &keys, bool any_subkey) {
    for (long index = 0; index < Count_Of(table);) {
        const InstanceRecord &record = table.Records[index];
        const bool matches = any_subkey ? Has_Key(record, keys) : Has_Keys(record, keys);
        if (matches && !IsWindow(record.Window)) {
            Remove_Record(table, index);
            continue;
        }
        if (matches && Is_Live(record)) return true;
        ++index;
    }
    return false;
}

void Add_Instance(InstanceTable &table, const InstanceKeys &keys, HWND window) {
    InstanceText title = {};
    if (Count_Of(table) < Instance_Capacity) GetWindowTextA(window, title, Title_Room);
    if (Add_Record(table, keys, title, window))
        Debug_Log_Entry("Added Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
    else
        Debug_Log_Entry("Couldn't add Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
}

} // namespace

bool First_Instance(const char *key, const char *subkey, HWND window) {
    const InstanceShareUse share;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    if (!table) return false;
    const InstanceKeys keys(key, subkey);
    Debug_Log_Entry("Checking Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
    if (const InstanceRecord *live = Find_Live(*table, keys)) {
        Bring_To_Front(live->Window);
        return false;
    }
    Add_Instance(*table, keys, window);
    return true;
}

bool Instance_Available(const char *key, const char *subkey) {
    const InstanceShareUse share;
    if (share.State() != InstanceShareState::Ready) return false;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    return table && Has_Live(*table, InstanceKeys(key, subkey), !subkey);
}

void Update_Instance(const char *, HWND window) {
    const InstanceShareUse share;
    if (share.State() != InstanceShareState::Ready) return;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    if (!table) return;
    for (long index = 0; index < Count_Of(*table); ++index) {
        InstanceRecord &record = table->Records[index];
        if (record.Window != window) continue;
        InstanceText title = {};
        Read_Title(window, title);
        Set_Title(record, title);
        return;
    }
}
