#pragma once
// A window with a thread of its own, which is told by posted messages what to do and says when it has done
// it: who waits for it runs no window procedure meanwhile. Any thread may call anything. A fork of the
// process that made the object has neither the thread nor whoever holds the lock: all calls do nothing there.

#include <platform/user.h>

#include <mutex>
#include <thread>

class WaitWindowThread {
  public:
    WaitWindowThread();
    void Open();
    void Close();
    void Show(bool show);

  private:
    bool Is_Open() const;
    bool Is_Forked() const;

    std::mutex lock_; // held during each call, and never by the window's thread
    std::thread thread_;
    HWND window_ = nullptr;
    const DWORD process_; // that the object was made in
};
