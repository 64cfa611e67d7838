#pragma once
// The window that a connection's monitors tell, for the length of a scope.

#include <platform/user.h>

#include <string>

class CallWindow {
  public:
    CallWindow();
    ~CallWindow();
    CallWindow(const CallWindow &) = delete;
    CallWindow &operator=(const CallWindow &) = delete;
    operator HWND() const { return window_; }

    /// Works off the thread's messages until Connection_Message comes; whether it tells of a connection that
    /// is up. The road ends when none comes.
    bool Hear_Of_A_Connection();

  private:
    static LRESULT Take_Message(HWND window, UINT message, WPARAM first, LPARAM second);

    HWND window_;
    std::string heard_; // '+' and '-', the oldest first
};
