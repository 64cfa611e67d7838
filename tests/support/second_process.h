#pragma once
// A second process of the same test program, to command line by line.
//
//     SECOND_PROCESS(counter) {                       // at file scope; `process` is its end of the wire
//         while (process.Hear() == "count") process.Tell("1");
//         return 0;                                   // its exit code
//     }
//     ...
//     SecondProcess counter("counter");
//     counter.Tell("count");
//     EXPECT_EQ(counter.Hear(), "1");
//     counter.Kill();
//
// It is a fresh program with the environment of the first, so on the same machine. What it writes to
// standard error is kept.

#include <string>
#include <sys/types.h>
#include <vector>

/// The second process's end.
class FirstProcess {
  public:
    explicit FirstProcess(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}
    const std::vector<std::string> &Arguments() const { return arguments_; }
    /// The next line; empty when the first process has let go.
    std::string Hear();
    void Tell(const std::string &line);

  private:
    std::vector<std::string> arguments_;
};

class SecondProcess {
  public:
    explicit SecondProcess(const std::string &role, const std::vector<std::string> &arguments = {});
    /// Kills it if it still runs.
    ~SecondProcess();
    SecondProcess(const SecondProcess &) = delete;
    SecondProcess &operator=(const SecondProcess &) = delete;

    void Tell(const std::string &line);
    /// The next line, waited for at most 60 seconds; empty when the process has ended or stays silent.
    std::string Hear();
    void Kill();
    /// Lets go of its input and waits: the exit code, or minus the number of the signal that ended it.
    int Wait();
    /// What it wrote to standard error; complete after Wait.
    const std::string &Errors() const { return errors_; }
    pid_t Id() const { return id_; }

  private:
    void Read_Errors();

    pid_t id_ = -1;
    int input_ = -1, output_ = -1, error_output_ = -1;
    std::string heard_, errors_;
    bool ended_ = false;
    int status_ = 0;
};

using SecondProcessRole = int (*)(FirstProcess &process);
struct SecondProcessRegistration {
    SecondProcessRegistration(const char *role, SecondProcessRole run);
};

#define SECOND_PROCESS(role)                                                                                 \
    static int role##_as_second_process(FirstProcess &process);                                              \
    static const SecondProcessRegistration role##_registration(#role, role##_as_second_process);             \
    static int role##_as_second_process([[maybe_unused]] FirstProcess &process)

/// For the test program's main: true when it was started in a role, which then has run.
bool Ran_As_Second_Process(int argc, char **argv, int *exit_code);
