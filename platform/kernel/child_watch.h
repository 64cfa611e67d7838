#pragma once
// Takes in the processes that this one has started as they end, so that the host keeps nothing of them,
// whether or not anybody waits for them, and wakes who waits for a process beside other objects. A thread of
// its own does it, which waits for all of them together; it begins with the first process and takes no
// signals.

#include <platform/kernel/process_object.h>

#include <list>

using Children = std::list<ProcessObject *>;

/// To be called before a process is started: false when there can be no such thread.
bool Begin_Child_Watch();

/// Holds on to the process until it has ended. Its place, a list of it alone that is made before it is
/// started, moves over to the watch, so that this cannot fail.
void Watch_Child(Children &place);

/// A process that was started here and has not ended, held for the caller; null when there is none.
ProcessObject *Find_Child(pid_t id);

/// Holds on to a process that was started elsewhere and watches it, until it has ended or as many calls of
/// the other have come. False when there can be no such watch.
bool Watch_Stranger(ProcessObject &process);
void Watch_Stranger_No_More(ProcessObject &process);
