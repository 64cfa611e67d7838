#pragma once
// What a program of the suite asks at its start: is there room to run, is the suite server up, may a
// component have this name. The settings stand in the suite's registry key. One thread of the process at a
// time.

#include <kelmara/api.h>

inline constexpr long Server_Without_Interface = -8300;
inline constexpr long Server_Not_Reached = -8299;

/// Binds the memory services, and returns when drive c: is known to have 10,240,000 bytes free. Otherwise the
/// user is told, in the language of "otherStrings.ltx", and the process ends with exit code -1.
KELMARA_API void Init_Kelmara();

/// 0 when the suite server can be reached, after it was started if need be by the command line in "Server",
/// of at most 1,023 characters. Server_Without_Interface for one without IServerInterface, and 0x800401F0 on
/// a thread without COM: neither starts anything. Server_Not_Reached when it cannot be started, or is not
/// there once it waits for input: it is asked for once more and not again. A server that never waits is given
/// a minute, one that makes no object half of that. Only the machine's last error tells why a start failed.
KELMARA_API long Verify_Kelmara();

/// Whether the name has none of the characters in "InvalidNameChars". That value gets its default,
/// `\/:*?"<>!.+,`, when it is missing or empty. A list of more than 255 characters stays as it is, and the
/// default counts. An empty name is valid, null is not.
KELMARA_API bool Is_Valid_Component_Name(const char *name);
