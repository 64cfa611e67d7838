// The store's way onto a machine and off it: folder, lock file, shared word.

#include <platform/registry/store.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/machine_state.h>

#include <cerrno>
#include <fcntl.h>

namespace {

bool Is_Deleted(const FileDescriptor &file) {
    struct stat status;
    return fstat(file.Get(), &status) == 0 && status.st_nlink == 0;
}

} // namespace

// Opens what is not open yet. What only writing needs may fail: Why_Not_Writable tells.
long RegistryStore::Enter_Current_Machine() {
    const unsigned serial = Machine_Serial();
    if (machine_ != serial) {
        Leave_Machine();
        const std::string machine_folder = Machine_Folder_Path();
        if (machine_folder.empty()) return Why_No_Machine(ERROR_CANTOPEN);
        folder_ = machine_folder + "/registry";
        path_ = folder_ + "/registry.log";
        machine_ = serial;
    }
    if (!publication_) publication_error_ = publication_.Open();
    if (lock_file_ && Is_Deleted(lock_file_)) lock_file_.Close();
    return lock_file_ && !lock_error_ ? NO_ERROR : Open_Lock();
}

void RegistryStore::Leave_Machine() {
    replica_ = {};
    seen_ = 0;
    compact_from_ = 0;
    refusal_reported_ = false;
    lock_file_.Close();
    publication_.Close();
    machine_ = 0;
}

void RegistryStore::Let_Go() {
    std::lock_guard writers(writers_);
    std::lock_guard replica(replica_lock_);
    Leave_Machine();
}

// Fails when the folder or the lock is not this user's own.
long RegistryStore::Open_Lock() {
    lock_error_ = Make_Private_Folder(folder_);
    if (lock_error_ == ERROR_ACCESS_DENIED) return lock_error_;
    if (lock_error_ == ERROR_PATH_NOT_FOUND) lock_error_ = ERROR_ACCESS_DENIED; // it cannot be made
    if (lock_error_) return NO_ERROR;
    const std::string path = folder_ + "/registry.lock";
    lock_file_ = Open_Own_File(path, O_RDWR | O_CREAT);
    if (lock_file_) return NO_ERROR;
    lock_error_ = Registry_Error_Of_Errno(errno, ERROR_CANTOPEN);
    if (errno == Not_This_Users_Own) return lock_error_;
    lock_file_ = Open_Own_File(path, O_RDONLY);
    return NO_ERROR;
}

long RegistryStore::Why_Not_Writable() const {
    if (lock_error_) return lock_error_;
    if (publication_error_) return publication_error_;
    return faccessat(AT_FDCWD, folder_.c_str(), W_OK, AT_EACCESS) == 0 ? NO_ERROR : ERROR_ACCESS_DENIED;
}
