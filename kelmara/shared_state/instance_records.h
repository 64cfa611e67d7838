#pragma once
// Inside the library: the records of the instance registry, under the lock. Nothing here asks for windows.
//
// A process may be killed between any two instructions of a change. A record's window is taken away before
// its texts change and set when they are whole, and Count takes a record in when it is whole, or leaves it
// out once those behind it have moved down. So what a kill can leave is a record without a window, which
// the next owner of the lock removes, or one that stands there twice. Set_Title alone leaves the window where
// it is, and may leave a torn title with it: the process that was killed is the window's own, as a rule.

#include <kelmara/shared_state/instances.h>

using InstanceText = char[Instance_Text_Size];

/// What was asked for, cut to what a record holds.
struct InstanceKeys {
    InstanceKeys(const char *key, const char *subkey);

    InstanceText Key, Subkey;
};

/// How many records may be followed, whatever stands in Count.
long Count_Of(const InstanceTable &table);
/// Removes the records without a window.
void Put_In_Order(InstanceTable &table);

bool Has_Key(const InstanceRecord &record, const InstanceKeys &keys);
bool Has_Keys(const InstanceRecord &record, const InstanceKeys &keys);
bool Has_Title(const InstanceRecord &record, const InstanceText &title);

/// Moves those behind it down one place.
void Remove_Record(InstanceTable &table, long index);
/// False when the table is full.
bool Add_Record(InstanceTable &table, const InstanceKeys &keys, const InstanceText &title, HWND window);
void Set_Title(InstanceRecord &record, const InstanceText &title);
