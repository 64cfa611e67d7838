#pragma once
// The right to change one component: one object on the machine has it at a time. It is given up with the
// object, and with the end of the process that took it. The thread that took it outlives the object.

#include <platform/types.h>

#include <string>

/// Taken and given up on one thread.
class EditLock {
  public:
    EditLock() = default;
    ~EditLock() { Give_Up(); }
    EditLock(const EditLock &) = delete;
    EditLock &operator=(const EditLock &) = delete;

    bool Is_Held() const { return m_Mutex; }
    /// By the component's key, in any letter case; waits for nobody. 0, ERROR_SHARING_VIOLATION when another
    /// object has it, or why there is no mutex to be had. May throw std::bad_alloc.
    long Take(const std::string &key);
    void Give_Up();

  private:
    static bool Is_Held_In_This_Module(const std::string &name);

    std::string m_Name;
    HANDLE m_Mutex = nullptr;
    EditLock *m_Next = nullptr; // of those that are held
};
