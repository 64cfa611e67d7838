#pragma once
// The machine's lock on the making of names: who holds it may look whether a name is there, in any letter
// case, and make it if it is not, without another process of the machine doing the same at the same time.
//
// Held for a few calls of the host, and gone with the process that holds it. Where the machine's folder
// cannot be written there is no lock, and the calls go on without.

#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/machine_state.h>

#include <fcntl.h>

class NameLock {
  public:
    NameLock() : file_(open(Path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (file_) Lock_File(file_.Get(), LOCK_EX);
    }
    ~NameLock() {
        if (file_) Unlock_File(file_.Get());
    }
    NameLock(const NameLock &) = delete;
    NameLock &operator=(const NameLock &) = delete;

  private:
    static std::string Path() { return Machine_Folder_Path() + "/names.lock"; }

    FileDescriptor file_;
};
