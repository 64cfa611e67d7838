#include <reference_suite/components/edit_lock.h>

#include <kelmara/shared_state/mutex_holder.h>

#include <platform/errors.h>
#include <platform/kernel.h>
#include <platform/letter_case.h>

#include <algorithm>
#include <mutex>

namespace {

// A thread may take a mutex of its own again, so that a module's own objects know each other by this.
constinit EditLock *first_held = nullptr;
constinit std::mutex held_changes;

// A name of a named object has no backslashes and counts its letter case.
std::string Lock_Name(const std::string &key) {
    std::string name = "Edit:" + key;
    std::replace(name.begin(), name.end(), '\\', '/');
    CharUpperBuffA(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

} // namespace

bool EditLock::Is_Held_In_This_Module(const std::string &name) {
    for (const EditLock *lock = first_held; lock; lock = lock->m_Next) {
        if (lock->m_Name == name) return true;
    }
    return false;
}

long EditLock::Take(const std::string &key) {
    std::string name = Lock_Name(key);
    const std::lock_guard guard(held_changes);
    if (Is_Held() || Is_Held_In_This_Module(name)) return ERROR_SHARING_VIOLATION;
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, name.c_str());
    if (!mutex) return static_cast<long>(GetLastError());
    if (Get_Mutex(mutex, 0) != 0) {
        CloseHandle(mutex);
        return ERROR_SHARING_VIOLATION;
    }
    m_Name.swap(name);
    m_Mutex = mutex;
    m_Next = first_held;
    first_held = this;
    return 0;
}

void EditLock::Give_Up() {
    if (!Is_Held()) return;
    const std::lock_guard guard(held_changes);
    for (EditLock **link = &first_held; *link; link = &(*link)->m_Next) {
        if (*link != this) continue;
        *link = m_Next;
        break;
    }
    ReleaseMutex(m_Mutex);
    CloseHandle(m_Mutex);
    m_Mutex = nullptr;
}
