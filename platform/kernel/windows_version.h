#pragma once
// Which Windows the machine is, by its settings.

#include <platform/types.h>

struct WindowsVersion {
    bool nt;
    DWORD major, minor, build;
    const char *service_pack;
};

/// The setting "windows", with the numbers of the setting "windows_version" if that is given: "major.minor"
/// or "major.minor.build". Windows XP without them, and for what they cannot be.
WindowsVersion Windows_Of_This_Machine();

/// True for the first edition of Windows 95, which lacks some calls of later ones.
bool Is_First_Windows_95();
