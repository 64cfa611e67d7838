#pragma once
// What kind of connection a device makes.

#include <kelmara/api.h>

/// Whether a device is one that no telephone number is dialled with: the PPPoE adapter by the name that
/// Windows XP shows for it (string KMSTR_XP_PPPOE_DEVICE of "confPlugins.ltx"), a device that the
/// remote-access service lists as "isdn", one of type "SERIAL" on Windows 2000 and later, one of type "vpn"
/// on all before. Types match without regard to letter case, names with regard to it, and of several devices
/// of one name the first counts. Its type goes to `type`, at least 17 bytes or null, whatever the answer;
/// "PPPOE" for the adapter. For a device that is not listed, or null, false with `type` untouched; so also
/// when it cannot be found out.
///
/// The adapter's name is read at the first call on Windows XP that finds it, and then stays. That call is for
/// one thread.
KELMARA_API bool Modem_Is_DSL(const char *name, char *type);
