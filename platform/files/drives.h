#pragma once
// What the calls about drives and disks have in common.

#include <platform/files/paths.h>

/// The setting that tells of a drive: "drive_d". Letters count without regard to case.
std::string Drive_Setting(char letter);

/// Find_Place, with null for the root of the current drive.
long Find_Disk_Place(const char *path, HostPlace &place);

/// DRIVE_ of files.h, for a drive by its capital letter; it need not be there.
unsigned Drive_Kind(char letter);
