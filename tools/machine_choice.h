#pragma once
// Which machine a command works on. KELMARA_MACHINE names it, as for every program; --machine FOLDER stands
// above that.
//
// Commands that need a machine's own things (its registry, its tables) call Require_Machine. Those that only
// work on files call Borrow_Machine: where there is no machine yet they get one for the time of the command,
// so that none is left behind in the user's home.

#include <tools/passing_folder.h>

#include <optional>
#include <string>

namespace tools {

/// What --machine gave; empty for none. A process that was loaded on another machine begins anew, with the
/// same arguments, on the chosen one.
void Choose_Machine(const std::string &folder, const char *const *argv);

/// Fails, with 1, when there is no machine: commands that look at one do not make it.
void Require_Machine();

/// A machine for the time of the object, which this process is on; then it is on the one that it was on
/// before. Fails with 2 where there is no place for it.
class PassingMachine {
  public:
    PassingMachine();
    ~PassingMachine();
    PassingMachine(const PassingMachine &) = delete;
    PassingMachine &operator=(const PassingMachine &) = delete;

  private:
    std::string before_; // empty: none
    std::optional<PassingFolder> folder_;
};

class BorrowedMachine {
  public:
    BorrowedMachine();
    BorrowedMachine(const BorrowedMachine &) = delete;
    BorrowedMachine &operator=(const BorrowedMachine &) = delete;

  private:
    std::optional<PassingMachine> machine_; // none: there was one
};

} // namespace tools
