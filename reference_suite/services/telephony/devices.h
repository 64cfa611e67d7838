#pragma once
// The line devices of the machine: a subkey each below "Telephony\Lines" of its registry, in that order, with
// a text "Name" and, where the name is not in plain characters, a number "StringFormat" (STRINGFORMAT_).

#include <platform/types.h>

#include <string>
#include <vector>

struct LineDevice {
    std::string name;
    DWORD string_format;
};

std::vector<LineDevice> Read_Line_Devices();
