#pragma once
// The telephony service and its dialling locations: where the machine is and how calls are made from there.
//
//     Setup_TAPI(instance);                  // once, before threads
//     Set_Current_Dial_Location("Office");
//     char number[256];
//     Create_Dial_Number("+1 (206) 555-1212", "Office", number, nullptr); // phone_numbers.h
//
// The service, "TAPI32.DLL", is loaded by the first call that needs it and stays; a machine without it loads
// and runs the library all the same, and the calls answer 0x80000049. The line application lives as long as
// the process. Nothing here is locked: Setup_TAPI ends before a thread calls the others, and the current
// location is the whole machine's.

#include <kelmara/api.h>

#include <platform/types.h>

/// Opens the line application, anew each time. What "lineInitialize" answers: 0 or an error of telephony.
KELMARA_API unsigned long Setup_TAPI(HINSTANCE instance);

/// Makes the location of that name, letter case counting, the current one. 0 when the service told its
/// locations, whether or not there is such a one and whether or not it could be made the current one; an
/// empty or null name changes nothing. The service's error when it did not tell them. 0xFFFFFFFF without
/// memory, and for a service that asks for more of it 16 times in a row. What a service puts beyond its own
/// record is not looked at.
KELMARA_API unsigned long Set_Current_Dial_Location(const char *name);

/// The name of the current location to `out`, which has `size` + 1 bytes: a longer one is cut to `size`
/// characters. Windows 95 has it in "telephon.ini", all others in the registry; the service is not asked.
/// True if a name was written, which is an empty one for a location without a name; one of more than 255
/// characters is cut to 255 in any case. False, with `out` untouched, when no location is the current one,
/// when the file's entries have no comma, without memory, and for a null `out` or a `size` below 0.
KELMARA_API bool Get_Current_Dial_Location(char *out, int size);

/// 0 when any line device has a name in plain characters, whichever it is; 0xFFFFFFFF when none has. All the
/// devices that "lineInitialize" told are asked, one after the other: a service that tells of billions, none
/// of them named, has the call take as long as their answers do.
KELMARA_API unsigned long Get_Current_Device_ID();
