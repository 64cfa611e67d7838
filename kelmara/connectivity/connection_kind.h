#pragma once
// What kind of connection a device makes, and the connection that needs no dialling.

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

/// Has the suite connect by the configuration that its server names as the current one, if that needs no
/// dialling: the server's setting "svac" becomes its name, and the connection component connects without dial
/// data, whatever it answers. 0 when it has run through, also for a configuration that is dialled, and when
/// anything is thrown on the way. The code of a server or a configuration that cannot be had, and 0x8000FFFF
/// for a connection component that cannot; the debug log is told. COM is initialised on the thread.
KELMARA_API unsigned int Verify_Static_Connection();
