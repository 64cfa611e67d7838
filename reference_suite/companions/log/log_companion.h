#pragma once
// The suite's log companion: the HTML log of a machine, and messages between its processes.
//
// Entries go to "log.html" in the suite's root folder, each on one complete line with its time and its
// process, in the order in which they came. Messages go to the clients that are registered in any process of
// the machine. Both are shared by name; a process that is killed at any moment leaves nothing torn and holds
// up nobody. Unloading the module, or the end of the process, ends all registrations and their threads.
// All routines may be called from any thread; none lets an exception out. A forked process takes no part in
// messages: it gets no client there, and stops none.

extern "C" {

/// Called once after the module is loaded, before any other routine; calling it again changes nothing. 0, or
/// a code of platform/errors.h: ERROR_FILE_NOT_FOUND when the suite has no root folder, otherwise what kept
/// the shared parts from being opened.
long Initialize();

/// With `broadcast` 0 one log entry: text in code page 1252 up to its terminator, `size` bytes at most and
/// never more than 8,192 characters; `code` means nothing. It is in the file when the call returns. Of HTML
/// the tags b, i, u, tt, br and font with color or size count, and so do "&nbsp", "&lt", "&gt", "&amp" and
/// "&quot", with a semicolon or without; all else shows as the characters that it is made of. Tags that are
/// left open are closed at the entry's end. Line ends are shown as such. An entry that cannot be written, or
/// has waited two seconds for other writers, is lost, and the process's next entry says how many were.
///
/// With any other `broadcast` a message: `size` bytes of any kind, 65,536 at most, to all clients that asked
/// for its `code`. One that is longer reaches nobody and counts as lost with those who would have heard it.
///
/// `data` is only read, during the call. A null `data` and a `size` below 1 are an empty message, and no
/// entry.
void Queue_Entry(char *data, long size, long code, long broadcast);

/// Hears one message at a time, in the order in which they were sent, on a thread that the client has for
/// itself; an exception that it lets out is dropped. It may call any routine here.
///
///     sender   number of the process that sent the message
///     code     the message's code, as it was given to Queue_Entry
///     data     its bytes, the client's to change during the call, with a zero behind them
///     size     how many they are
///     lost     how many messages, of whatever code, this client has lost between the last one that it was
///              handed and this one: clients that are slower than the messages come lose the oldest, once
///              more than 262,144 bytes of messages, with 20 more for each, wait on the machine
///     context  what was given to Get_Messages
using LogMessageCallback = void (*)(unsigned long sender, long code, char *data, long size, long lost,
                                    void *context);

/// Registers a client: from here on it hears the messages with that `code`, 0 being all codes; those that its
/// own process sends only with `own_too`. `*client` is the handle for Stop_Messages. 0, or a code with
/// `*client` untouched: ERROR_INVALID_PARAMETER without a callback or a place for the handle,
/// ERROR_TOO_MANY_OPEN_FILES when the machine has 64 clients, ERROR_INVALID_FUNCTION before Initialize and
/// once the module is being unloaded, ERROR_NOT_ENOUGH_MEMORY.
long Get_Messages(long code, LogMessageCallback callback, void *context, bool own_too, void **client);

/// Ends a registration. When it returns the callback is not running and is never called again; it waits for a
/// call that is under way, so the caller holds nothing that the callback waits for. From within the client's
/// own callback it returns at once, as it does where two callbacks stop each other, and that call is the
/// last. A handle that is no client's is ignored.
void Stop_Messages(void *client);

/// Clears away the registrations of processes that have ended without Stop_Messages, on the caller's thread,
/// so that their places can be had again. Whoever sends a message does so too.
void Run_Cleanup_Thread();
}
