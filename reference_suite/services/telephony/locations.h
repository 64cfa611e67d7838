#pragma once
// The dialling locations of the machine, as its registry holds them below "Telephony\Locations". Read anew by
// each call: whoever changes them is heard at once.

#include <platform/types.h>

#include <optional>
#include <string>
#include <vector>

inline constexpr DWORD Location_Dials_Tones = 1; // of Location::flags; pulses otherwise

struct Location {
    DWORD id;
    std::string name;
    DWORD country; // id
    std::string area_code;
    std::string outside_access; // dialled in front of numbers of the same area
    std::string long_distance_access;
    std::string disable_call_waiting; // empty where there is no call waiting
    DWORD flags;
};

/// Those that have an id.
std::vector<Location> Read_Locations();
std::optional<DWORD> Current_Location_Id();
/// The one of that id; none when there is no such one.
std::optional<Location> Find_Location(DWORD id);
bool Set_Current_Location_Id(DWORD id);
