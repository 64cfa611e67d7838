#pragma once
// How names and data reach the caller's buffers, the same for every call that gives them.
//
// A call asks first whether everything fits. When something does not, no buffer is touched and every size is
// told as what is needed: ERROR_MORE_DATA.

#include <platform/registry.h>
#include <platform/registry/key_tree.h>

/// `*size` is the room in `out`, terminator included. A null `out` is large enough for anything.
bool Name_Fits(std::string_view name, LPSTR out, const DWORD *size);
/// `*size` is then the number of characters, with the terminator if the name is not given.
void Give_Name(std::string_view name, LPSTR out, DWORD *size, bool give);

/// The same for a value's data, in bytes.
bool Data_Fits(const RegistryValue &value, const BYTE *data, const DWORD *size);
/// Text with room to spare behind it gets a terminator there unless it ends in one.
void Give_Data(const RegistryValue &value, DWORD *type, BYTE *data, DWORD *size, bool give);

void Give_Time(std::uint64_t time, FILETIME *out);
