#pragma once
// The record behind a window's GWL_USERDATA word, by which up to three kinds of owner share the word.
//
//     void *record = InsertWindowUserData(window, 0, control);    // each owner once
//     auto *control = reinterpret_cast<Control *>(GetWindowUserData(window, 0));
//     DeleteWindowUserData(record);                                // each owner once
//
// A record lives until every insert is matched by a delete. The last delete clears the word, if the window is
// still there and the word is still the record's. Records are known by their addresses, and each knows its
// window: a word that is none of this window's records, whatever it points at, is never followed, and a
// record that is gone, or whose window is gone, is never read through a window. So a window may be destroyed
// before or after its record, and its handle may come again. A record is used on the thread that owns its
// window alone; threads with windows of their own do not disturb each other.

#include <kelmara/api.h>

/// The first five fields are frozen; those behind them are the library's own.
struct WindowUserData {
    unsigned long Magic; // offset 0, 0xCAFEBEEF while it is alive
    long References;     // offset 4, inserts that no delete has matched yet
    long Slots[3];       // offset 8: a bound control, hover help, the procedure that the window had
    HWND Window;
    WindowUserData *Next; // in its chain of live records
};
static_assert(offsetof(WindowUserData, References) == 4 && offsetof(WindowUserData, Slots) == 8);
static_assert(offsetof(WindowUserData, Window) == 20);

/// Stores `value` in slot 0, 1 or 2 of the window's record, any other slot stores nothing, and counts one
/// owner more. A window whose word is 0 gets a record first, with the window's procedure in slot 2. The
/// record, to be given back by DeleteWindowUserData; null, with nothing changed, for what is no window of
/// this process, for a word that is used for something else, and without memory.
KELMARA_API void *InsertWindowUserData(HWND window, int slot, void *value);

/// 0 for a slot that is empty. -1 for a window without a record, and for a slot other than 0, 1 and 2.
KELMARA_API long GetWindowUserData(HWND window, int slot);

/// Counts one owner less; at none the record goes. What is no live record, null too, is ignored.
KELMARA_API void DeleteWindowUserData(void *record);

/// Inside the library: empties a slot that holds `value`, in a live record alone.
void Empty_Window_Slot(void *record, int slot, const void *value);
