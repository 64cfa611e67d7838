#pragma once
// Settings of the system's services: dialling locations, line devices, remote-access devices.

#include <string>

/// Writes what a first user would: three locations, the first of them the current one, and a few devices.
/// Where there is a current location already nothing is written: they are the user's. Empty on success,
/// otherwise what went wrong, as a sentence.
std::string Write_Telephony_Settings();
