#pragma once
// Small services of the operating system: entry points that may not be there, starting a program, who the
// user is, which Windows this is, a random number.
//
// A CWeakAPICall belongs to one thread at a time. The functions keep nothing and may be called from any
// thread.

#include <kelmara/foundation/new_delete.h>

/// Looks up entry points by name and holds the library that they are in, one at a time, until it loads
/// another or dies; the entry points are good that long. A copy holds the library by a load of its own; where
/// that fails the copy is empty.
class KELMARA_API CWeakAPICall {
  public:
    KELMARA_CLASS_ALLOCATION

    CWeakAPICall();
    CWeakAPICall(const CWeakAPICall &other);
    CWeakAPICall &operator=(const CWeakAPICall &other);
    ~CWeakAPICall();

    /// The entry point `name` of `library`, which is loaded unless it is the one that is held, by exactly
    /// this spelling; what was held is freed first. Null when either is missing; a library that could not be
    /// loaded is not tried again until another has been asked for. Null, and what is held stays, for null and
    /// for a library name of more than 255 characters.
    void *Load_Call(const char *library, const char *name);

  private:
    friend struct WeakAPICallLayout;

    KELMARA_INTERNAL void Drop();
    KELMARA_INTERNAL void Copy_From(const CWeakAPICall &other);

    char m_Library[256] = {};   // offset 0
    HMODULE m_Module = nullptr; // offset 256
};
static_assert(sizeof(CWeakAPICall) == 260);

// The flag word of CheckOsVersion: as bits, and as the values that come.
inline constexpr unsigned long Os_Other = 0;
inline constexpr unsigned long Os_NT = 1;
inline constexpr unsigned long Os_NT_5 = 3; // 2000 and XP
inline constexpr unsigned long Os_Windows_95 = 4;
inline constexpr unsigned long Os_Windows_98 = 8;
inline constexpr unsigned long Os_Windows_Me = 16;

/// Starts a program by its command line, which must be writable, in the current directory, and does not wait
/// for it. The line goes to the machine whole, a quoted argument at its end included. 0, or 2 when it was not
/// started.
KELMARA_API long RunProcess(char *commandLine);

/// 1 when the user is in the Administrators group, enabled or not, and on every Windows that is not of the NT
/// family; otherwise, and when it cannot be found out, 0.
KELMARA_API int RunningAsAdministrator();

/// The flag word of this machine; Os_Other for any Windows that is none of the above.
KELMARA_API void CheckOsVersion(unsigned long &flags);

/// A number of the runtime's series (Machine_Rand), which the caller seeds, scaled to `low` to `high`. Once
/// in 32768 it is `high` + 1. Ranges of more than 65,538 numbers overflow 32 bits, and what comes then lies
/// anywhere.
KELMARA_API long RangeRandom(long low, long high);

/// Does nothing.
KELMARA_API void NullProc();

/// A breakpoint: without a debugger it ends the process.
KELMARA_API void Debugger();
