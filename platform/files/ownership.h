#pragma once
// Who may touch what a machine consists of: its folder, the files in it that are the machine's own, its
// shared memory; and whose code may be loaded.
//
// All of a machine belongs to the effective user, no other, root neither. Folders are 0700 and files 0600
// whatever the umask. A folder that others may write to is refused, because it may hold anything by now; one
// that they may only read is closed to them. A file is looked at after it is open, without waiting for
// anybody, and no link is followed at its name. Files that programs keep on drives are not strict in any of
// this.

#include <platform/kernel/file_descriptor.h>

#include <string>
#include <sys/stat.h>

/// errno of a file that is there and not this user's own: whatever else failed, this tells of it.
inline constexpr int Not_This_Users_Own = ELOOP;

/// Bits of a file's mode that make it somebody else's.
inline constexpr mode_t Writable_By_Group_Or_Others = 0022;
inline constexpr mode_t Open_To_Anybody_Else = 0077;

/// Opens a file of the machine's own, or makes it with O_CREAT; never waits. Empty with errno when it cannot
/// be had: Not_This_Users_Own for a link, a pipe, a folder, another user's file, and one with a bit of
/// `refused`.
FileDescriptor Open_Own_File(const std::string &path, int flags,
                             mode_t refused = Writable_By_Group_Or_Others);

/// A folder itself, this user's, that nobody else may write to.
bool Is_Own_Folder(const std::string &path);

/// mkdir for the owner alone, whatever the umask; false with errno.
bool Make_Owners_Folder(const std::string &path);

/// Makes a folder for its owner alone, or sees to it that one that is there is. A code of errors.h:
/// ERROR_ACCESS_DENIED, and nothing changed, for what is no such folder.
long Make_Private_Folder(const std::string &path);

/// True when code may come from the file that is open, under that path: it and the folders that it is in and
/// found in belong to root, this user, or whoever owns the program or this library, whose code runs here
/// anyway; and not everybody may write to them. A folder like /tmp, in which everybody keeps his own, will
/// do.
bool May_Give_Code(int descriptor, const std::string &path);
