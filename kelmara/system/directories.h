#pragma once
// Whole directories, the directories of INF files, free disk space and the CD-ROM drive.
//
// Paths are texts of the caller's with backslashes as separators; forward slashes are not understood. A path
// that does not fit into 255 characters with a backslash at its end is refused, as is an empty one.
//
// DirCreate, ClearDir and DirDestroyAll change the process's current directory while they run and take no
// lock: nothing else of the process may depend on it meanwhile.

#include <kelmara/api.h>

/// Makes one backslash of each pair, in place: of a run of three or four, two.
KELMARA_API void MakeRealFilePath(char *path);

/// Creates `path`, with or without a backslash at its end, and every missing level above it, outermost first.
/// A relative path counts from the current directory, which is in the end what it was. Nothing tells whether
/// it worked. Creates nothing on a drive that is not there, nor when the current directory is gone or cannot
/// be told: then there would be no way back to it.
KELMARA_API void DirCreate(const char *path);

/// Deletes what is in `path`, links but not what they lead to, and stays in it: the current directory is
/// `path` afterwards. A directory that cannot be listed counts as empty. 0, or -1 at the first thing that
/// cannot be deleted or entered, or whose path is too long; the current directory is then where that lies,
/// and the rest stays. -1 with nothing deleted when `path` cannot be entered, has a forward slash or is a
/// bare drive ("c:"). A `path` that is itself a link stands for the directory it leads to.
KELMARA_API int ClearDir(const char *path);

/// ClearDir, and deletes `path` too; of a link, the link alone. The current directory is in the end what it
/// was. 0, or -1; where `path` has a forward slash, is a bare drive, cannot be entered, or is or holds the
/// current directory, and where that cannot be told, nothing is deleted. -1 also when the machine cannot
/// go back to it.
KELMARA_API int DirDestroyAll(const char *path);

/// The directory that INF files know as `id`, in `path`, which has room for 269 characters and a terminator:
/// 10 and 25 the Windows directory, 11 and 12 the system directory; 17, 18, 20 and 21 "\INF\", "\HELP\",
/// "\FONTS\" and "\Viewers\" in them; 24 and 30 "c:\"; -1 and 65535 leave `path` alone. 0; for any other
/// number 267 with `path` untouched. A directory that the machine cannot tell is an empty text, with 0.
KELMARA_API long Get_Path_From_Directory_ID(long id, char *path);

/// Whether drive c: has that many bytes free. Where the machine can only tell clusters, the answer is by a
/// 32-bit number of bytes, which wraps on a large disk.
KELMARA_API bool Check_Free_Disk_Space(unsigned long bytes);

/// The root of the first CD-ROM drive, "d:\" for example, in `root`, which has room for 4 bytes; empty when
/// there is none.
KELMARA_API void Find_CDROM(char *root);
