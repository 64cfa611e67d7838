#pragma once
// The machine of this process, for the rest of the platform: folders, settings, and where it changed.

#include <platform/machine.h>

#include <string>
#include <string_view>

/// Counts the machines that this process has entered. What is kept of a machine is thrown away when the
/// number has moved on.
unsigned Machine_Serial();

/// The machine's folder; empty when it cannot be had (Machine_Folder says why).
std::string Machine_Folder_Path();

/// Folder of the machine's shared memory, private to its owner; not made by this call. Empty as above.
std::string Shared_Memory_Folder_Path();

/// When those are empty: ERROR_ACCESS_DENIED for a folder that was refused as not this user's own, else
/// `otherwise`.
long Why_No_Machine(long otherwise);

/// A line for whoever looks after the machine, on standard error: "kelmara machine: ...".
void Report_Machine_Trouble(const std::string &text);

/// A setting as Get_Machine_Setting finds it; false and `value` untouched when it is not set.
bool Find_Machine_Setting(std::string_view name, std::string &value);
