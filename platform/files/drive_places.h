#pragma once
// The drives of the machine, as folders of the host.
//
// Drives a: to y: are the folders `drive_a` to `drive_y` of the machine. c: is always there; another one is
// there when its folder is, or when machine.conf has a setting of the folder's name, and the folder is made
// then. z: is the host's root. A folder that is a symbolic link is a drive like any other. May be called from
// any thread.

#include <string>

inline constexpr char Host_Drive = 'z';

/// A place of the host, told from a drive's root.
struct DrivePlace {
    char letter;       // small
    std::string below; // without a separator in front; empty for the root itself
};

char Small_Letter(char c);

/// The host's folder of a drive; empty when the drive is not there. The letter's case does not matter.
std::string Drive_Root(char letter);

/// Where an absolute path of the host lies: on the machine's own drive, by the path's text alone; else on the
/// innermost drive whose folder is a link to something around it; else on z:.
DrivePlace Place_Of(const std::string &absolute);

/// Of the process's current directory. False when that is gone; `place` keeps what it has then.
bool Find_Current_Place(DrivePlace &place);
