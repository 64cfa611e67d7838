#pragma once
// The machine's C runtime, where it differs from the host's: files by their Windows paths, the current
// directory as one, random numbers, and threads with handles.
//
// What the host has too goes by a name of its own here. What an opened stream is given to (fread, fwrite,
// fflush, fseek, ftell, ...) are the host's own, but streams are closed by Machine_Close_Stream. A call that
// fails sets errno as Windows' C runtime does, and the last error to the reason in Windows' terms (files.h
// tells the paths and their errors). All calls may be made from any thread.

#include <platform/types.h>

#include <cstdio>

inline constexpr int Machine_Rand_Max = 32767;

extern "C" {

/// fopen. Modes are "rb", "wb", "ab" and the same with "+", and "wbx" and "w+bx", which make a file and fail
/// with EEXIST where the name is taken; there are no text modes. Null on failure, and what was there is as it
/// was, though a new file may stay, empty, where memory runs out: errno is ENOENT for a missing file or
/// folder and for a path that is too long, EACCES for a folder, a read-only file that would be written, and
/// whatever else the host refuses, EINVAL for another mode and for a name that cannot be, EMFILE, ENOSPC.
/// EACCES also for a file that a program of the host keeps locked, after two seconds. While a stream is open
/// its file can be neither deleted nor renamed, by any process of the machine; programs that are started do
/// not get it.
PLATFORM_API FILE *Machine_Open_Stream(const char *path, const char *mode);

/// fclose. 0, or EOF with errno where what was still to be written could not be; the stream is gone either
/// way. From then on its file can be deleted and renamed. After a plain fclose it may take a moment more,
/// while another thread starts a program. Null is refused with EINVAL.
PLATFORM_API int Machine_Close_Stream(FILE *stream);

/// Deletes a file, as DeleteFileA. 0, or -1: errno is ENOENT or EACCES, for a folder too.
PLATFORM_API int Machine_Remove(const char *path);

/// Gives a file or folder another name, on the same disk. 0, or -1 and nothing has changed: EEXIST when `to`
/// is there, in whatever letter case, which is decided in one step with the renaming; ENOENT, EACCES, EXDEV.
/// A name may change in letter case alone. On a disk of the host that can neither rename without replacing
/// nor give a file two names, files are not renamed: EACCES or EINVAL.
PLATFORM_API int Machine_Rename(const char *from, const char *to);

/// _chdir: 0, or -1 and the current directory is the one it was.
PLATFORM_API int Machine_Change_Directory(const char *path);

/// _getcwd: the current directory with its drive in `out`, which is the result. Null, and `out` untouched,
/// when it does not fit into `size` bytes with its terminator (ERANGE), or `out` is null (EINVAL).
PLATFORM_API char *Machine_Get_Directory(char *out, int size);

/// The next number of the calling thread's series, 0 to 32767. Every thread of every process starts the
/// series of seed 1, which begins 41, 18467, 6334. Fit for shuffling, not for secrets.
PLATFORM_API int Machine_Rand();

/// Starts the series of `seed` for the calling thread. A series is the same on every machine.
PLATFORM_API void Machine_Seed_Rand(unsigned int seed);

/// Starts a thread that runs `routine` and ends with what it gives. A handle to the thread, for the caller to
/// close: it lasts beyond the thread's end, and the thread beyond it (WaitForSingleObject,
/// GetExitCodeThread). `stack_size` 0 is the host's usual one, others are rounded up to 64 KB at least; the
/// thread's number goes to `thread_id`, which may be null. 0 on failure, with errno and the last error:
/// EINVAL for `flags` other than 0, without a routine, or for a stack that cannot be; ENOMEM or EAGAIN when
/// there is no room for one more. What the routine throws ends the process.
PLATFORM_API std::uintptr_t _beginthreadex(void *security, unsigned stack_size, unsigned (*routine)(void *),
                                           void *argument, unsigned flags, unsigned *thread_id);

/// ExitThread.
[[noreturn]] PLATFORM_API void _endthreadex(unsigned code);
}
