#pragma once
// A line on standard error that tells how far work has come: only on a terminal, and only when it takes over
// a second. It is gone when the object is. Step also ends the command where a signal has come.

#include <chrono>
#include <cstddef>
#include <string>

namespace tools {

class Progress {
  public:
    Progress(std::string what, std::size_t total);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// One of the total is done. Cheap: it looks at the clock every 256 times.
    void Step();

  private:
    void Show();

    std::string what_;
    std::size_t total_, done_ = 0;
    std::chrono::steady_clock::time_point next_;
    bool terminal_, shown_ = false;
};

} // namespace tools
