#pragma once
// A line on standard error that tells how far work has come: only on a terminal, and only when the command's
// work has taken over a second. It is gone when the object is. Step also ends the command where a signal has
// come.
//
// Several objects may be there at once, one step of one being many of another: they share the line, and each
// shows itself with its next step. What writes to the terminal meanwhile calls Make_Room_On_Terminal first;
// Flush_Output does.

#include <chrono>
#include <cstddef>
#include <string>

namespace tools {

class Progress {
  public:
    /// `total` 0 is for work of which nobody knows how much it is: the line counts the steps then.
    Progress(std::string what, std::size_t total);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// So many of the total are done. Cheap enough for each line of a text: without a terminal it does not
    /// even look at the clock.
    void Step(std::size_t count = 1);

  private:
    void Show();

    std::string what_;
    std::size_t total_, done_ = 0;
    bool terminal_;
};

/// Takes the line away for what is to be written now. When that does not end its line, as
/// `stays_within_line` says, no progress is shown until something has that does.
void Make_Room_On_Terminal(bool stays_within_line = false);

} // namespace tools
