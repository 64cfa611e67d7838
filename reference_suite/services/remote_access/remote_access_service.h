#pragma once
// The suite's remote-access service: the entry of "Rasapi32.DLL" that lists devices.
//
// The devices are settings of the machine: a subkey each below
// "Software\Microsoft\Windows\CurrentVersion\Remote Access\Devices" of its registry, with the texts "Name"
// and "Type", cut to what the record has room for. Any thread may call.

#include <platform/telephony.h>

extern "C" {
/// 0; ERROR_BUFFER_TOO_SMALL, with size and count told; ERROR_INVALID_SIZE for a record of another edition;
/// ERROR_INVALID_PARAMETER without a size or count; ERROR_NOT_ENOUGH_MEMORY.
RasEnumDevices RasEnumDevicesA;
}
