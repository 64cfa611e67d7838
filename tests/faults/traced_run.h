#pragma once
// Work in a process of its own that stops at each call of the host, which can then be looked at, made to
// fail, cut short, or be the process's last.
//
//     TracedRun run([] { return Save() ? 0 : 1; });
//     while (run.Next_Call()) {
//         if (run.Call() == SYS_write && --until_failure == 0) run.Fail(ENOSPC);
//     }
//     EXPECT_EQ(run.Exit_Code(), 0);
//
// Only the thread that works is seen. The parent is to have nothing open of what is worked on: a fork has the
// same descriptors.

#include <functional>
#include <string>
#include <sys/types.h>

class TracedRun {
  public:
    explicit TracedRun(const std::function<int()> &work);
    /// Kills it if it still runs.
    ~TracedRun();
    TracedRun(const TracedRun &) = delete;
    TracedRun &operator=(const TracedRun &) = delete;

    /// To where the next call begins; false when the process has ended.
    bool Next_Call();
    /// To where the next call begins or ends.
    bool Next_Stop();
    /// The number of the call that begins, as of SYS_write.
    long Call() const;
    long First_Argument() const;
    /// Whether that is the descriptor of a pipe, which no work of ours has: the sanitizers try addresses so.
    bool Goes_To_A_Pipe() const;
    /// Whether the call, an mmap, is of a file.
    bool Maps_A_File() const;
    /// The call is not made and answers with this number of errno.
    void Fail(int error);
    /// The call, which has its size as its third argument, does half of it.
    void Cut_Short();
    void Kill();
    /// Once it has ended: 70 for work that threw; minus a signal's number.
    int Exit_Code() const;

  private:
    pid_t id_ = -1;
    int status_ = 0;
    bool in_call_ = false;
};

/// Runs the work in a plain child and gives what it returns; "failed" when it throws or crashes.
std::string Seen_By_Another(const std::function<std::string()> &work);
