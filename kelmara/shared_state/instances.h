#pragma once
// Whether a program of the suite runs already, and the way to bring the running copy to the front.
//
//     if (!First_Instance("Kelmara", "Dialer", main_window)) return 0; // the older copy is in front now
//     ...
//     SetWindowTextA(main_window, "Connected");
//     Update_Instance("Kelmara", main_window);
//
// All processes of the machine share a table of top-level windows, each under two keys and with the title
// that it had. A record counts while its window is there and has that title. Nobody takes a record out: those
// of windows that are gone, or have another title by now, go when somebody asks for their keys. The table
// lasts as long as a process has the library loaded.
//
// Keys are compared with case and by their first 255 characters; null counts as empty. Any thread of any
// process may call, and waits for the one that is in the table as long as it takes: up to 3 seconds for each
// window of a program that does not answer. Titles come from what the machine knows of the windows, those of
// this process included, so that no window procedure runs under the lock. What brings a window of this
// process to the front does run them, or waits for the window's thread: that is done once the lock is
// released. Nothing throws, whatever a procedure throws. Where a window cannot be looked at, for want of
// memory say, its record stays as it is. A process killed in the middle of a change leaves at most a record
// that does not count.

#include <kelmara/api.h>

#include <platform/types.h>

inline constexpr long Instance_Capacity = 49;   // records that the table takes
inline constexpr long Instance_Records = 50;    // records that it has room for
inline constexpr long Instance_Text_Size = 256; // bytes, terminator included

/// The shared block's layout, frozen. Native little-endian, 32-bit words.
struct InstanceRecord {
    char Key[Instance_Text_Size];    // offset 0
    char Subkey[Instance_Text_Size]; // offset 256
    char Title[Instance_Text_Size];  // offset 512, as it was seen last
    HWND Window;                     // offset 768, null while the record is being written
};
struct InstanceTable {
    long Count;                               // offset 0, records in use, packed from the first
    InstanceRecord Records[Instance_Records]; // offset 4, in order of registration
};
static_assert(offsetof(InstanceRecord, Key) == 0 && offsetof(InstanceRecord, Subkey) == 256);
static_assert(offsetof(InstanceRecord, Title) == 512 && offsetof(InstanceRecord, Window) == 768);
static_assert(sizeof(InstanceRecord) == 772);
static_assert(offsetof(InstanceTable, Count) == 0 && offsetof(InstanceTable, Records) == 4);
static_assert(sizeof(InstanceTable) == 0x96CC);

/// Registers `window`, to be called once the program has its main window. True when no other instance lives,
/// also when the table is full and the program runs on unregistered. False when one does, which is then
/// restored if it is iconic and its last active popup brought to the front if that is visible; and when the
/// table or its lock cannot be had, or it cannot be told whether a window is there.
KELMARA_API bool First_Instance(const char *key, const char *subkey, HWND window);

/// Whether an instance lives; nothing is brought to the front. A null `subkey` is any. False also when the
/// table or its lock cannot be had, and when the table, which could not be had before, only now can.
KELMARA_API bool Instance_Available(const char *key, const char *subkey);

/// Takes the title of a registered window anew, so that it goes on to count. To be called whenever the
/// window's title has changed. `name` is not read. A window that is not registered changes nothing, nor
/// does one whose title cannot be read.
KELMARA_API void Update_Instance(const char *name, HWND window);
