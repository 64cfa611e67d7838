#pragma once
// Which machine a command works on. KELMARA_MACHINE names it, as for every program; --machine FOLDER stands
// above that.
//
// Commands that need a machine's own things (its registry, its tables) call Require_Machine. Those that only
// work on files call Borrow_Machine: where there is no machine yet they get one for the time of the command,
// so that none is left behind in the user's home.

#include <string>

namespace tools {

/// What --machine gave; empty for none. A process that was loaded on another machine begins anew, with the
/// same arguments, on the chosen one.
void Choose_Machine(const std::string &folder, const char *const *argv);

/// Fails, with 1, when there is no machine: commands that look at one do not make it.
void Require_Machine();

class BorrowedMachine {
  public:
    BorrowedMachine();
    ~BorrowedMachine();
    BorrowedMachine(const BorrowedMachine &) = delete;
    BorrowedMachine &operator=(const BorrowedMachine &) = delete;

  private:
    std::string folder_; // empty: there was one
};

} // namespace tools
