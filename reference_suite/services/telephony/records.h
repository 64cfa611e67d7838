#pragma once
// What the service tells, in the records of its callers. Each answers 0 or an error of telephony.

#include <reference_suite/services/telephony/devices.h>
#include <reference_suite/services/telephony/locations.h>
#include <reference_suite/services/telephony/translation.h>

LONG Tell_Locations(const std::vector<Location> &locations, DWORD current, LINETRANSLATECAPS *out);
LONG Tell_Device(const LineDevice &device, DWORD id, LINEDEVCAPS *out);
LONG Tell_Translation(const Translation &translation, LINETRANSLATEOUTPUT *out);
