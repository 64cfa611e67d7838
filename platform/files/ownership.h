#pragma once
// Who may touch what a machine consists of: its folder, the files in it that are the machine's own, its
// shared memory.
//
// All of a machine belongs to the effective user, no other, root neither. Folders are 0700 and files 0600
// whatever the umask. A folder that others may write to is refused, because it may hold anything by now,
// unless it is empty; that one, and one that they may only read, are closed to them. A file is looked at
// after it is open, without waiting for anybody, and no link is followed at its name. Its group's bits do not
// count: it lies in a folder that no group enters. Files that programs keep on drives are not strict in any
// of this.

#include <platform/kernel/file_descriptor.h>

#include <string>
#include <sys/stat.h>

/// errno of a file that is there and not this user's own: whatever else failed, this tells of it.
inline constexpr int Not_This_Users_Own = ELOOP;

/// Bits of a file's mode that make it somebody else's.
inline constexpr mode_t Writable_By_Others = 0002;
inline constexpr mode_t Open_To_Anybody_Else = 0077;

/// Opens a file of the machine's own, or makes it with O_CREAT; never waits. Empty with errno when it cannot
/// be had: Not_This_Users_Own for a link, a pipe, a folder, another user's file, and one with a bit of
/// `refused`. What its maker has not given to its owner yet, or was killed before, is given to him if it is
/// to be written: a file of mode 0000, and an empty one that nobody else has a bit of.
FileDescriptor Open_Own_File(const std::string &path, int flags, mode_t refused = Writable_By_Others);

/// False also where it cannot be told.
bool Is_Nothing_There(const std::string &path);

/// A folder itself, this user's, that nobody else may write to.
bool Is_Own_Folder(const std::string &path);

/// ERROR_ACCESS_DENIED for what is there and Make_Private_Folder refuses, else NO_ERROR; changes nothing.
long Refusal_Of_Folder(const std::string &path);

/// mkdir for the owner alone, whatever the umask; false with errno and nothing made, ENOENT also when another
/// process has taken the folder away again.
bool Make_Owners_Folder(const std::string &path);

/// Makes a folder on the way to a machine; one that is there is the host's affair, but for an empty one of
/// this user's of mode 0000. Its maker, if that is not changed within a moment, was killed before he gave it
/// to its owner: it is made anew.
void Make_Owners_Parent(const std::string &path);

/// Makes a folder for its owner alone, or sees to it that one that is there is. A code of errors.h:
/// ERROR_ACCESS_DENIED, and nothing changed, for what is no such folder and no empty one of the owner's;
/// ERROR_TOO_MANY_OPEN_FILES, ERROR_NOT_ENOUGH_MEMORY, and ERROR_SHARING_VIOLATION when another process has
/// it locked for two seconds: then it cannot be told whether it is empty; ERROR_DISK_FULL;
/// ERROR_PATH_NOT_FOUND when it cannot be made, or other processes take it away each time.
long Make_Private_Folder(const std::string &path);
