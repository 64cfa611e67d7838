#pragma once
// Where Windows itself lies on the machine.

inline constexpr char Windows_Folder[] = "C:\\WINDOWS";
inline constexpr char Temporary_Folder[] = "C:\\WINDOWS\\TEMP";

/// By the machine's version of Windows.
const char *System_Folder();
