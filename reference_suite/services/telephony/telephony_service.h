#pragma once
// The suite's telephony service: the entries of "TAPI32.DLL" at version 1.4, for the machine's line devices
// and dialling locations.
//
// It translates numbers and dials none. The current location and all settings are the machine's, in its
// registry, and are read anew by each call. Any thread may call. There is no end of a line application: it
// lives as long as the process. Calling cards there are none.

#include <platform/telephony.h>

extern "C" {
LineInitialize lineInitialize;
LineNegotiateAPIVersion lineNegotiateAPIVersion;
LineGetDevCaps lineGetDevCaps;
LineGetTranslateCaps lineGetTranslateCaps;
LineSetCurrentLocation lineSetCurrentLocation;
LineTranslateAddress lineTranslateAddress;
}
