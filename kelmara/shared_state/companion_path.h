#pragma once
// Inside the library: where a companion library lies.

inline constexpr unsigned long Companion_Path_Size = 256; // bytes, terminator included

/// The path that `value` of the suite's registry key holds. False when there is none, it is empty or it does
/// not fit. May be called from any thread: it does without a CRegMaster, whose lists are for one.
bool Read_Companion_Path(const char *value, char (&path)[Companion_Path_Size]);
