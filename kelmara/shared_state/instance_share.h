#pragma once
// Inside the library: the block and the lock of the instance registry.
//
// They are set up when the library is loaded, if the process is on a machine then, and otherwise by the first
// call; a process that enters another machine gets that one's with its next call. Setting up does not
// wait for the lock: who makes it owns it from the start, and empties the table. It waits up to 5 seconds for
// the machine's lock of names, for the block and for the mutex each, when another process is stopped in it.

#include <kelmara/shared_state/calls_under_way.h>
#include <kelmara/shared_state/instances.h>
#include <kelmara/shared_state/mutex_holder.h>

/// Sets up what is there to be had without making a machine. Says nothing, and a failure is left for later.
void Init_Instance_Share_At_Load();

/// The exit routine: lets go of the block and the lock, unless a thread is in a call.
void Release_Instance_Share();

enum class InstanceShareState { Ready, Set_Up_Late, Failed };

/// Stands in each call for as long as it uses the table.
class InstanceShareUse {
  public:
    InstanceShareUse();
    /// Set_Up_Late: an earlier attempt had failed, on this machine or before there was one, and this one has
    /// not.
    InstanceShareState State() const { return m_State; }
    /// The table, with the lock held and its count checked; null when the lock cannot be had.
    InstanceTable *Lock(CMutexHolder &lock) const;

  private:
    const CallsUnderWay::Call m_Call;
    const InstanceShareState m_State;
};
