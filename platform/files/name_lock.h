#pragma once
// The machine's lock on the making of names: who holds it may look whether a name is there, in any letter
// case, and make it if it is not, without another process of the machine doing the same at the same time.
//
// Held for a few calls of the host, and gone with the process that holds it. A process that is stopped while
// it holds it makes the others fail, each after five seconds. Where there is no machine, or its folder cannot
// be written, there is no lock, and the calls go on without; where another's file is in its place, they fail.

#include <platform/files/host_error.h>
#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/machine_state.h>

#include <fcntl.h>

inline constexpr unsigned Patience_For_Names = 5000; // milliseconds

class NameLock {
  public:
    NameLock() {
        const std::string folder = Machine_Folder_Path();
        if (!folder.empty()) Take(folder + "/names.lock");
    }
    ~NameLock() {
        if (file_) Unlock_File(file_.Get());
    }
    NameLock(const NameLock &) = delete;
    NameLock &operator=(const NameLock &) = delete;

    /// NO_ERROR when the name may be made.
    long Error() const { return error_; }

  private:
    void Take(const std::string &path) {
        file_ = Open_Own_File(path, O_RDWR | O_CREAT);
        if (!file_) {
            if (errno == Not_This_Users_Own) error_ = ERROR_ACCESS_DENIED;
            if (errno == EMFILE || errno == ENFILE) error_ = ERROR_TOO_MANY_OPEN_FILES;
            return;
        }
        const int failed = Lock_File_In_Time(file_.Get(), LOCK_EX, Patience_For_Names);
        if (failed == EWOULDBLOCK) error_ = ERROR_SHARING_VIOLATION;
    }

    FileDescriptor file_;
    long error_ = NO_ERROR;
};
