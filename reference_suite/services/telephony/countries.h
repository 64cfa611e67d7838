#pragma once
// How numbers are dialled in the countries that the service knows.

#include <platform/types.h>

#include <string_view>

/// A rule is what is dialled, written as it is shown: E stands for the country code, F for the area code, G
/// for the number in its area; all else stands for itself.
struct Country {
    DWORD id; // of the settings; countries that share a code have one each
    DWORD code;
    const char *trunk; // in front of an area code that is dialled within the country, not from abroad
    const char *same_area;
    const char *long_distance;
    const char *international;
};

/// Null for one that is not known.
const Country *Country_By_Id(DWORD id);
/// The first of those that share a code.
const Country *Country_By_Code(DWORD code);
