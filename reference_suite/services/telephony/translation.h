#pragma once
// From an address to what is dialled for it from a location. Reads and writes nothing but its arguments.
//
// A canonical address is "+ country (area) number", the area optional; what stands behind a "|", "^" or the
// end of the line is no part of it. Any other address is dialled as it is, after the location's tone or
// pulse. Only what a telephone can dial gets into the dialable string; the displayable one is the same as
// people write it.

#include <reference_suite/services/telephony/locations.h>

#include <platform/telephony.h>

#include <string_view>

struct Translation {
    std::string dialable;
    std::string displayable;
    DWORD current_country = 0; // codes; 0 for a country that is not known
    DWORD destination_country = 0;
    DWORD results = 0; // LINETRANSLATERESULT_
};

/// 0; LINEERR_INVALADDRESS, also for an empty one and for characters that no number has;
/// LINEERR_INVALCOUNTRYCODE for a canonical address from a location in a country that is not known: no rule
/// says how it is dialled there. Options are those of LINETRANSLATEOPTION_; the two that force are for
/// addresses within the country.
LONG Translate_Address(const Location &location, std::string_view address, DWORD options,
                       Translation &translation);
