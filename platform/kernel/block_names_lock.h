#pragma once
// The machine's lock of names, for the making and the going of shared blocks: threads of this process keep
// each other out by a mutex, processes by the machine's file. The kernel takes the file's lock back from a
// process that is killed; one that is stopped is waited for within limits.

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/file_descriptor.h>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <mutex>
#include <string>

/// What a block that the host refuses is told by.
inline long Error_Of_Errno(int code) {
    switch (code) {
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOSPC:
    case ENOMEM:
        return ERROR_COMMITMENT_LIMIT;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

class BlockNamesLock {
  public:
    static constexpr unsigned Longest_Wait = 5000; // milliseconds

    explicit BlockNamesLock(const std::string &path, unsigned patience = Longest_Wait)
        : guard_(Process_Lock(), std::chrono::milliseconds(patience)) {
        if (!guard_) return;
        file_ = Open_Own_File(path, O_RDWR | O_CREAT);
        const int failed = file_ ? Lock_File_In_Time(file_.Get(), LOCK_EX, patience) : errno;
        error_ = failed == 0             ? NO_ERROR
                 : failed == EWOULDBLOCK ? ERROR_SHARING_VIOLATION
                                         : Error_Of_Errno(failed);
    }
    // Not left to the closing: a process forked meanwhile has the file open too.
    ~BlockNamesLock() {
        if (Held()) Lock_File(file_.Get(), LOCK_UN);
    }
    BlockNamesLock(const BlockNamesLock &) = delete;
    BlockNamesLock &operator=(const BlockNamesLock &) = delete;

    /// NO_ERROR once it is held; ERROR_SHARING_VIOLATION when others have it all the time.
    long Error() const { return error_; }
    bool Held() const { return error_ == NO_ERROR; }

  private:
    static std::timed_mutex &Process_Lock() {
        static std::timed_mutex *lock = new std::timed_mutex;
        return *lock;
    }
    std::unique_lock<std::timed_mutex> guard_;
    FileDescriptor file_;
    long error_ = ERROR_SHARING_VIOLATION;
};
