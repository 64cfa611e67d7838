#include <platform/registry/store_file.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace {

constexpr std::uint32_t Window_Size = 64u << 10;

bool May_Not_Write(int code) {
    return code == EACCES || code == EPERM || code == EROFS;
}

// Bytes read, fewer only at the file's end; -1 on failure.
ssize_t Read_Fully(int descriptor, std::uint32_t offset, unsigned char *bytes, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = pread(descriptor, bytes + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(done);
}

} // namespace

long Registry_Error_Of_Errno(int code, long otherwise) {
    switch (code) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ERROR_DISK_FULL;
    case EACCES:
    case EPERM:
    case EROFS:
    case ELOOP:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case ENOENT:
    case ENOTDIR:
        return ERROR_CANTOPEN;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    default:
        return otherwise;
    }
}

StoreFile::Opened StoreFile::Open(const std::string &path) {
    FileDescriptor file = Open_Own_File(path, O_RDWR);
    if (!file && May_Not_Write(errno)) file = Open_Own_File(path, O_RDONLY);
    if (!file && errno == ENOENT) return {};
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        return {nullptr, Registry_Error_Of_Errno(errno, ERROR_READ_FAULT)};
    }
    if (status.st_size > Largest_Registry_File) return {nullptr, ERROR_BADDB};
    if (status.st_size == 0) return {};

    RegistryFileHeader header;
    const ssize_t got = Read_Fully(file.Get(), 0, reinterpret_cast<unsigned char *>(&header), sizeof header);
    if (got < 0) return {nullptr, Registry_Error_Of_Errno(errno, ERROR_READ_FAULT)};
    if (got != static_cast<ssize_t>(sizeof header) || !Is_Header(header)) return {nullptr, ERROR_BADDB};
    return {std::shared_ptr<StoreFile>(new StoreFile(std::move(file), header, status)), 0};
}

StoreFile::Opened StoreFile::Make(const std::string &path, RegistryFileHeader header) {
    FileDescriptor file = Open_Own_File(path, O_RDWR | O_CREAT | O_EXCL);
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        return {nullptr, Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT)};
    }
    if (!Complete_Header(header)) return {nullptr, ERROR_WRITE_FAULT};
    Opened made{std::shared_ptr<StoreFile>(new StoreFile(std::move(file), header, status)), 0};
    made.error = made.file->Write(0, reinterpret_cast<const unsigned char *>(&header), sizeof header);
    if (made.error) made.file.reset();
    return made;
}

long StoreFile::Find_Size(std::uint32_t &size) const {
    struct stat status;
    if (fstat(descriptor_.Get(), &status) != 0) return Registry_Error_Of_Errno(errno, ERROR_READ_FAULT);
    if (status.st_size > Largest_Registry_File) return ERROR_BADDB;
    size = static_cast<std::uint32_t>(status.st_size);
    return NO_ERROR;
}

long StoreFile::Write(std::uint32_t offset, const unsigned char *bytes, std::size_t size) const {
    for (std::size_t done = 0; done < size;) {
        const ssize_t wrote =
            pwrite(descriptor_.Get(), bytes + done, size - done, static_cast<off_t>(offset + done));
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote < 0 && errno == EBADF) return ERROR_ACCESS_DENIED; // open for reading alone
        if (wrote < 0) return Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
        if (wrote == 0) return ERROR_DISK_FULL;
        done += static_cast<std::size_t>(wrote);
    }
    return NO_ERROR;
}

long StoreFile::Cut(std::uint32_t size) const {
    int result;
    do {
        result = ftruncate(descriptor_.Get(), static_cast<off_t>(size));
    } while (result != 0 && errno == EINTR);
    if (result == 0) return NO_ERROR;
    return errno == EINVAL || errno == EBADF ? ERROR_ACCESS_DENIED
                                             : Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
}

long StoreFile::Flush() const {
    if (fdatasync(descriptor_.Get()) == 0) return NO_ERROR;
    return Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
}

const unsigned char *StoreFile::Window::At(std::uint32_t offset, std::uint32_t size) {
    if (offset < start_ || offset - start_ > bytes_.size() || bytes_.size() - (offset - start_) < size) {
        if (size > end_ - offset) return nullptr;
        bytes_.resize(std::min(std::max(size, Window_Size), end_ - offset));
        start_ = offset;
        const ssize_t got = Read_Fully(descriptor_, offset, bytes_.data(), bytes_.size());
        if (got < 0) error_ = Registry_Error_Of_Errno(errno, ERROR_READ_FAULT);
        bytes_.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        if (bytes_.size() < size) return nullptr;
    }
    return bytes_.data() + (offset - start_);
}

long Flush_Folder(const std::string &path) {
    const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder && fsync(folder.Get()) == 0) return NO_ERROR;
    return Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
}
