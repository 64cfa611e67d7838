#pragma once
// Windows paths, and where they lie on the host.
//
// Links inside a drive are followed as the host does, after "." and ".." are taken out of the path.
//
// Windows texts are in code page 1252, host paths in UTF-8. Calls return a code of errors.h and leave the
// last error alone; they may be made from any thread, but the current directory is the whole process's.

#include <cstddef>
#include <string>
#include <string_view>

/// `host_path` gets an absolute path without a separator at its end; on failure it keeps what it has.
/// Trailing dots and spaces of a part are dropped, ".." stays below the drive's root, "x:name" counts from
/// the current directory when that lies on x: and from the drive's root otherwise. What does not exist keeps
/// its spelling. ERROR_PATH_NOT_FOUND for an empty path and a drive that is not there, ERROR_INVALID_NAME for
/// characters that no name can have, ERROR_BAD_NETPATH for a path that begins with two separators.
long Map_To_Host(std::string_view windows_path, std::string &host_path);

inline constexpr std::size_t Longest_Path_Text = 260; // of what a file call is given

/// Where a path of a file call leads.
struct HostPlace {
    std::string host_path;     // as Map_To_Host gives it
    std::string windows_path;  // the full path with its drive: "C:\folder\name", "C:\" for a root
    bool is_root = false;      // of a drive
    bool means_folder = false; // a separator stands behind the name: nothing but a folder can be meant
};

/// Map_To_Host within the limits of file calls: null counts as empty, ERROR_FILENAME_EXCED_RANGE for a text
/// of more than 260 characters, ERROR_PATH_NOT_FOUND when the full path has 260 or more.
long Find_Place(const char *windows_path, HostPlace &place);

/// `windows_path` gets the full path with its drive, "\" at the end of a root only. Links in it are kept,
/// except where only the place they lead to lies on a drive of the machine. ERROR_PATH_NOT_FOUND for an empty
/// path, and for a relative one when the current directory is gone.
long Map_To_Windows(std::string_view host_path, std::string &windows_path);
