#pragma once
// Memory routines for tests: they count what is live, and fail when told to.
//
// Every test program runs on them from its start; a second process binds as any program does, unless its role
// calls Install_Test_Memory.

/// Installs the routines as a host would. To be called before the first allocation of the process.
void Install_Test_Memory();

long Live_Blocks();
long Live_Bytes();
/// Requests so far, failed ones included.
long Requests();
/// The size of the last request.
long Last_Request();

/// For the length of a scope the n-th request (1 is the next) fails, and all after it if `for_ever`.
class FailingMemory {
  public:
    explicit FailingMemory(long nth, bool for_ever = false);
    ~FailingMemory();
    FailingMemory(const FailingMemory &) = delete;
    FailingMemory &operator=(const FailingMemory &) = delete;
    /// Requests that were refused so far.
    long Refused() const;
};

/// Expects at its end that what it saw at its start is live, no more and no less.
class NoLeak {
  public:
    NoLeak();
    ~NoLeak();
    NoLeak(const NoLeak &) = delete;
    NoLeak &operator=(const NoLeak &) = delete;

  private:
    long blocks_;
};
