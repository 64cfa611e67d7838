#pragma once
// The `kelmara` command run as a user runs it: a process of its own with its arguments, on this test's
// machine.
//
//     const CommandRun run({"reg", "query", "HKLM\\Software"});
//     EXPECT_EQ(run.exit_code, 0) << run.errors;
//
// It is waited for at most 60 seconds, and killed then.

#include <string>
#include <sys/types.h>
#include <vector>

struct CommandRun {
    explicit CommandRun(const std::vector<std::string> &arguments, const std::string &input = {});

    int exit_code = -1; // minus the number of the signal that ended it
    std::string output, errors;
};

/// One that is still running: its output goes to files of the test, it can be sent a signal.
class RunningCommand {
  public:
    /// Of the signals that end a program it ignores one at most: `ignored`.
    explicit RunningCommand(const std::vector<std::string> &arguments,
                            const std::string &input_file = "/dev/null",
                            const std::string &output_file = "/dev/null",
                            const std::string &error_file = "/dev/null", int ignored = 0);
    ~RunningCommand();
    RunningCommand(const RunningCommand &) = delete;
    RunningCommand &operator=(const RunningCommand &) = delete;

    void Signal(int signal);
    /// As CommandRun's.
    int Wait();
    pid_t Id() const { return id_; }

  private:
    pid_t id_ = -1;
};

/// Whether a file that is written to comes to hold the text, within ten seconds at least.
bool Comes_To_Hold(const std::string &file, const std::string &text);
