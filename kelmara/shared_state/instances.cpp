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

// False when it could not be read, which says nothing of the window unless the last error does.
bool Read_Known_Title(HWND window, InstanceText &title) {
    SetLastError(NO_ERROR);
    return InternalGetWindowTextA(window, title, Title_Room) != 0 || GetLastError() == NO_ERROR;
}

bool Read_Title(HWND window, InstanceText &title) {
    Wait_For_Program_Of(window);
    return Read_Known_Title(window, title);
}

enum class Finding { Live, Renamed, Gone, Unknown };

Finding Failure_To_Read() {
    return GetLastError() == ERROR_INVALID_WINDOW_HANDLE ? Finding::Gone : Finding::Unknown;
}

Finding Look_At(const InstanceRecord &record) {
    InstanceText title = {};
    if (!IsWindow(record.Window) && !Read_Known_Title(record.Window, title)) return Failure_To_Read();
    if (!Read_Title(record.Window, title)) return Failure_To_Read();
    return Has_Title(record, title) ? Finding::Live : Finding::Renamed;
}

bool Is_Of_Another_Process(HWND window) {
    DWORD process_id = 0;
    GetWindowThreadProcessId(window, &process_id);
    return process_id != 0 && process_id != GetCurrentProcessId();
}

void Bring_To_Front(HWND window) {
    const HWND popup = GetLastActivePopup(window);
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    if (IsWindowVisible(popup)) SetForegroundWindow(popup);
}

struct Search {
    Finding finding;
    HWND window; // that was found live
};

// Removes the records of the keys that do not count, up to the first that does or cannot be told.
Search Find_Live(InstanceTable &table, const InstanceKeys &keys) {
    Finding finding = Finding::Gone;
    for (long index = 0; index < Count_Of(table);) {
        const InstanceRecord &record = table.Records[index];
        if (!Has_Keys(record, keys)) {
            ++index;
            continue;
        }
        const Finding found = Look_At(record);
        if (found == Finding::Live) return {found, record.Window};
        if (found == Finding::Unknown) {
            finding = found;
            ++index;
        } else {
            Remove_Record(table, index);
        }
    }
    return {finding, nullptr};
}

// Removes records of windows that are gone, but not those whose title has changed.
bool Has_Live(InstanceTable &table, const InstanceKeys &keys, bool any_subkey) {
    for (long index = 0; index < Count_Of(table);) {
        const InstanceRecord &record = table.Records[index];
        const bool matches = any_subkey ? Has_Key(record, keys) : Has_Keys(record, keys);
        const Finding found = matches ? Look_At(record) : Finding::Unknown;
        if (found == Finding::Live) return true;
        if (found == Finding::Gone)
            Remove_Record(table, index);
        else
            ++index;
    }
    return false;
}

void Add_Instance(InstanceTable &table, const InstanceKeys &keys, HWND window) {
    InstanceText title = {};
    if (Count_Of(table) < Instance_Capacity) Read_Known_Title(window, title);
    if (Add_Record(table, keys, title, window))
        Debug_Log_Entry("Added Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
    else
        Debug_Log_Entry("Couldn't add Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
}

// False when another instance lives or may live; `to_front` is set to one that is still to be brought there.
bool Register(const InstanceKeys &keys, HWND window, HWND &to_front) {
    const InstanceShareUse share;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    if (!table) return false;
    Debug_Log_Entry("Checking Instance for %s, %s %X", keys.Key, keys.Subkey, Number_Of(window));
    const Search search = Find_Live(*table, keys);
    if (search.finding == Finding::Unknown) return false;
    if (search.finding != Finding::Live) {
        Add_Instance(*table, keys, window);
        return true;
    }
    if (Is_Of_Another_Process(search.window))
        Bring_To_Front(search.window);
    else
        to_front = search.window;
    return false;
}

} // namespace

bool First_Instance(const char *key, const char *subkey, HWND window) try {
    HWND to_front = nullptr;
    const bool is_first = Register(InstanceKeys(key, subkey), window, to_front);
    if (to_front) Bring_To_Front(to_front);
    return is_first;
} catch (...) {
    return false;
}

bool Instance_Available(const char *key, const char *subkey) try {
    const InstanceShareUse share;
    if (share.State() != InstanceShareState::Ready) return false;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    return table && Has_Live(*table, InstanceKeys(key, subkey), !subkey);
} catch (...) {
    return false;
}

void Update_Instance(const char *, HWND window) try {
    const InstanceShareUse share;
    if (share.State() != InstanceShareState::Ready) return;
    CMutexHolder lock;
    InstanceTable *table = share.Lock(lock);
    if (!table) return;
    for (long index = 0; index < Count_Of(*table); ++index) {
        InstanceRecord &record = table->Records[index];
        if (record.Window != window) continue;
        InstanceText title = {};
        if (Read_Title(window, title)) Set_Title(record, title);
        return;
    }
} catch (...) {
}
