#pragma once
// The log, and messages between the suite's processes: the client side of the log companion, a library that
// the value "Log" of the suite's registry key names by its full path.
//
// The companion is loaded by the first call here that needs it. Where it is missing, or cannot be loaded, all
// calls do nothing, and each later call tries again; what was to be written meanwhile is lost. No failure of
// the log reaches a caller: nothing throws, allocates or ends the process, and the thread's last error stays
// as it was.
//
// All calls may be made from any thread. One thread loads the companion, with the process's current directory
// in the companion's folder meanwhile and back where it was in every case; a thread that comes to it then
// waits at most a second and does without the companion after that. What the loading thread itself calls here
// while it loads does nothing. The library's exit routine gives the companion back, once no thread is in it
// any more or two seconds have passed (then it stays loaded); from then on it is not loaded again.

#include <kelmara/api.h>

/// Hears messages, on a thread of the companion's. What the arguments mean is the companion's to say; the
/// library only hands the address on.
using MessageCallback = void (*)(unsigned long, long, char *, long, long, void *);

/// Registers a callback with the companion, which all five arguments go to and whose answer comes back.
/// `client` receives the handle for Remove_Message_Client. -1, and `client` untouched, when there is no
/// companion or it takes no clients.
KELMARA_API long Add_Message_Client(long first, MessageCallback callback, void *context, bool fourth,
                                    void **client);

/// Ends a registration. Loads nothing: without a loaded companion, nothing happens.
KELMARA_API void Remove_Message_Client(void *client);

/// Sends `size` bytes to the message clients of all processes. The companion gets the pointer as it stands,
/// null too.
KELMARA_API void Broadcast_Message(long code, const char *data, long size);

/// Has the companion clear away what dead processes left.
KELMARA_API void Run_Message_Cleanup_Thread();

/// Writes an entry, at most 1,024 characters of it. Without a companion the arguments are not looked at. Null
/// and a text that cannot be formatted write nothing.
KELMARA_API void Std_Log_Entry(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// The same for whoever looks for a fault, and only if the file "logVars.txt" lay in the suite's root folder
/// when the companion was loaded. The entry, marked as a debug message, has at most 255 characters with its
/// mark; the debugger gets up to 2,047 characters of the bare text, and a line feed.
KELMARA_API void Debug_Log_Entry(const char *format, ...) __attribute__((format(printf, 1, 2)));
