#pragma once
// A window with a thread of its own, which is told by posted messages what to do and says when it has done
// it: who waits for it runs no window procedure meanwhile. Any thread may call anything.

#include <platform/user.h>

#include <mutex>
#include <thread>

class WaitWindowThread {
  public:
    void Open();
    void Close();
    void Show(bool show);

  private:
    bool Is_Open();

    std::mutex lock_; // held during each call, and never by the window's thread
    std::thread thread_;
    HWND window_ = nullptr;
    DWORD process_ = 0; // that the thread is in
};
