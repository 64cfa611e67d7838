#include <platform/kernel/shared_block.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/open_folder.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr char Magic[8] = {'K', 'M', 'S', 'H', 'A', 'R', 'E', 'D'};
constexpr std::size_t Longest_Name = sizeof(SharedBlockHeader::name) - 1;

constexpr unsigned Patience_For_Names = 5000; // milliseconds

long Error_Of_Errno(int code) {
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

// The machine's lock of names: threads of this process keep each other out by the mutex, processes by the
// file. The kernel takes the file's lock back from a process that is killed; one that is stopped is waited
// for within limits.
class NamesLock {
  public:
    explicit NamesLock(const std::string &path, unsigned patience = Patience_For_Names)
        : guard_(Process_Lock(), std::chrono::milliseconds(patience)) {
        if (!guard_) return;
        file_ = Open_Own_File(path, O_RDWR | O_CREAT);
        const int failed = file_ ? Lock_File_In_Time(file_.Get(), LOCK_EX, patience) : errno;
        error_ = failed == 0             ? NO_ERROR
                 : failed == EWOULDBLOCK ? ERROR_SHARING_VIOLATION
                                         : Error_Of_Errno(failed);
    }
    // Not left to the closing: a process forked meanwhile has the file open too.
    ~NamesLock() {
        if (Held()) Lock_File(file_.Get(), LOCK_UN);
    }
    NamesLock(const NamesLock &) = delete;
    NamesLock &operator=(const NamesLock &) = delete;
    bool Held() const { return error_ == NO_ERROR; }
    long Error() const { return error_; }

  private:
    static std::timed_mutex &Process_Lock() {
        static std::timed_mutex *lock = new std::timed_mutex;
        return *lock;
    }
    std::unique_lock<std::timed_mutex> guard_;
    FileDescriptor file_;
    long error_ = ERROR_SHARING_VIOLATION; // where others have it all the time
};

bool Reserve(int descriptor, std::uint32_t size) {
    const off_t bytes = static_cast<off_t>(Shared_Block_Contents_Offset) + size;
    if (ftruncate(descriptor, bytes) != 0) return false;
    int error;
    while ((error = posix_fallocate(descriptor, 0, bytes)) == EINTR) {
    }
    errno = error;
    return error == 0;
}

void *Map(int descriptor, std::uint32_t size) {
    void *contents =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, Shared_Block_Contents_Offset);
    return contents == MAP_FAILED ? nullptr : contents;
}

std::uint64_t Thread_Numbers() {
    struct stat status;
    return stat("/proc/self/ns/pid", &status) == 0 ? status.st_ino : 0;
}

bool Write_Header(int descriptor, SharedBlockKind kind, const std::string &name, std::uint32_t size) {
    SharedBlockHeader header = {};
    std::memcpy(header.magic, Magic, sizeof Magic);
    header.layout_version = Shared_Block_Layout_Version;
    header.word_size = sizeof(void *);
    header.kind = static_cast<std::uint32_t>(kind);
    header.size = size;
    std::memcpy(header.name, name.data(), name.size());
    header.thread_numbers = Thread_Numbers();
    return pwrite(descriptor, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
}

// What is wrong with a block that somebody holds; NO_ERROR when it can be shared.
long Check_Header(int descriptor, SharedBlockKind kind, const std::string &name, std::uint32_t &size) {
    SharedBlockHeader header = {};
    struct stat status;
    if (pread(descriptor, &header, sizeof header, 0) != static_cast<ssize_t>(sizeof header) ||
        fstat(descriptor, &status) != 0 || std::memcmp(header.magic, Magic, sizeof Magic) != 0) {
        return ERROR_FILE_CORRUPT;
    }
    if (header.layout_version != Shared_Block_Layout_Version || header.word_size != sizeof(void *)) {
        return ERROR_REVISION_MISMATCH;
    }
    // Locks tell their owners by thread number: other numbers, other owners.
    if (header.thread_numbers != Thread_Numbers()) return ERROR_REVISION_MISMATCH;
    if (header.name[Longest_Name] != 0 || name != header.name) return ERROR_FILE_CORRUPT;
    if (header.kind != static_cast<std::uint32_t>(kind)) return ERROR_INVALID_HANDLE;
    if (header.size == 0 || status.st_size < static_cast<off_t>(Shared_Block_Contents_Offset) + header.size) {
        return ERROR_FILE_CORRUPT;
    }
    size = header.size;
    return NO_ERROR;
}

// True when another holder is alive. When none is, the caller alone holds the file from then on.
bool Somebody_Holds(int descriptor) {
    return !Lock_File(descriptor, LOCK_EX | LOCK_NB);
}

// The caller holds the lock of names.
void Throw_Away_What_Nobody_Holds(const std::string &folder) {
    const OpenFolder opened = Open_Folder(folder);
    if (!opened) return;
    while (const dirent *entry = readdir(opened.get())) {
        if (entry->d_type == DT_DIR) continue;
        const std::string path = folder + "/" + entry->d_name;
        const FileDescriptor file = Open_Own_File(path, O_RDWR, Open_To_Anybody_Else);
        if (file && !Somebody_Holds(file.Get())) unlink(path.c_str());
    }
}

bool Is_Nothing_There(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

// Where no block comes of it, the folder goes again unless something is in it. Under the lock of names.
struct FolderInUse {
    const std::string &path;
    const std::unique_ptr<SharedBlock> &block;
    ~FolderInUse() {
        if (!block) rmdir(path.c_str());
    }
};

// True once for each machine of this process.
bool Is_First_Opening(const std::string &folder) {
    static std::string *seen = new std::string; // under the lock of names
    if (*seen == folder) return false;
    *seen = folder;
    return true;
}

} // namespace

// File names keep what is readable of the name; the rest goes as %XX. A long one ends in a number made of all
// its characters, and the header's full name decides.
std::string Block_File_Name(const std::string &name) {
    std::string file = "block-";
    for (const unsigned char c : name) {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           c == '-' || c == '_';
        char escaped[4] = {static_cast<char>(c), 0, 0, 0};
        if (!plain) std::snprintf(escaped, sizeof escaped, "%%%02X", c);
        file += escaped;
    }
    if (file.size() <= 200) return file;
    unsigned long long number = 14695981039346656037ull;
    for (const unsigned char c : name) number = (number ^ c) * 1099511628211ull;
    char tail[20];
    std::snprintf(tail, sizeof tail, "~%016llx", number);
    return file.substr(0, 180) + tail;
}

bool Read_Block_Header(int descriptor, SharedBlockHeader &header) {
    return pread(descriptor, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header) &&
           std::memcmp(header.magic, Magic, sizeof Magic) == 0 && header.name[Longest_Name] == 0 &&
           header.layout_version == Shared_Block_Layout_Version && header.word_size == sizeof(void *);
}

SharedBlock::SharedBlock(int descriptor, std::string path, std::string lock_path, std::uint32_t size)
    : descriptor_(descriptor),
      opener_(getpid()),
      path_(std::move(path)),
      lock_path_(std::move(lock_path)),
      size_(size) {}

SharedBlock::Opened SharedBlock::Open(SharedBlockKind kind, const std::string &name, std::uint32_t size,
                                      SharedBlockMaking making) {
    Opened opened;
    if (name.empty() || name.size() > Longest_Name || size == 0) {
        opened.error = ERROR_INVALID_PARAMETER;
        return opened;
    }
    const std::string machine = Machine_Folder_Path();
    const std::string folder = Shared_Memory_Folder_Path();
    if (machine.empty()) {
        opened.error = Why_No_Machine(ERROR_PATH_NOT_FOUND);
        return opened;
    }
    std::string lock_path = machine + "/names.lock";
    std::string path = folder + "/" + Block_File_Name(name);

    const NamesLock names(lock_path);
    if ((opened.error = names.Error()) != NO_ERROR) return opened;
    if (making.existing_only && Is_Nothing_There(folder)) {
        opened.error = ERROR_FILE_NOT_FOUND;
        return opened;
    }
    if ((opened.error = Make_Private_Folder(folder)) != NO_ERROR) return opened;
    const FolderInUse in_use{folder, opened.block};
    if (Is_First_Opening(folder)) Throw_Away_What_Nobody_Holds(folder);

    FileDescriptor existing = Open_Own_File(path, O_RDWR, Open_To_Anybody_Else);
    if (existing.Get() < 0 && errno != ENOENT) {
        opened.error = Error_Of_Errno(errno);
        return opened;
    }
    if (existing.Get() >= 0 && Somebody_Holds(existing.Get())) {
        if ((opened.error = Check_Header(existing.Get(), kind, name, size)) != NO_ERROR) return opened;
        if (!Lock_File(existing.Get(), LOCK_SH)) {
            opened.error = ERROR_ACCESS_DENIED;
            return opened;
        }
        opened.block.reset(new SharedBlock(existing.Give(), std::move(path), std::move(lock_path), size));
        return opened;
    }

    if (making.existing_only) {
        opened.error = ERROR_FILE_NOT_FOUND;
        return opened;
    }

    // Nobody holds it: what lies there was left by the killed. The lock comes last, so that a block whose
    // maker is killed before it is complete is held by nobody either.
    unlink(path.c_str());
    FileDescriptor file = Open_Own_File(path, O_RDWR | O_CREAT | O_EXCL);
    if (!file) {
        opened.error = Error_Of_Errno(errno);
        return opened;
    }
    std::unique_ptr<SharedBlock> block(new SharedBlock(file.Give(), {}, {}, size));
    const bool worked_on = making.prepare || making.first_use;
    const bool complete = Reserve(block->descriptor_, size) && (!worked_on || block->Contents());
    if (complete && making.prepare) making.prepare(block->Contents());
    if (!complete || !Write_Header(block->descriptor_, kind, name, size) ||
        !Lock_File(block->descriptor_, LOCK_SH)) {
        opened.error = Error_Of_Errno(errno);
        unlink(path.c_str());
        return opened;
    }
    block->path_ = std::move(path);
    block->lock_path_ = std::move(lock_path);
    if (making.first_use) making.first_use(block->Contents());
    opened.block = std::move(block);
    opened.fresh = true;
    return opened;
}

SharedBlock::Opened SharedBlock::Make_Private(std::uint32_t size, SharedBlockMaking making) {
    Opened opened;
    FileDescriptor descriptor(memfd_create("kelmara-private-block", MFD_CLOEXEC));
    if (!descriptor || size == 0 || !Reserve(descriptor.Get(), size)) {
        opened.error = size == 0 ? ERROR_INVALID_PARAMETER : Error_Of_Errno(errno);
        return opened;
    }
    std::unique_ptr<SharedBlock> block(new SharedBlock(descriptor.Give(), {}, {}, size));
    if ((making.prepare || making.first_use) && !block->Contents()) {
        opened.error = ERROR_COMMITMENT_LIMIT;
        return opened;
    }
    if (making.prepare) making.prepare(block->Contents());
    if (making.first_use) making.first_use(block->Contents());
    opened.block = std::move(block);
    opened.fresh = true;
    return opened;
}

SharedBlock::~SharedBlock() {
    if (contents_) munmap(contents_, size_);
    Let_Name_Go_If_Last();
    close(descriptor_);
}

// The file goes with its last holder, and the folder with its last file. Where others hold it the shared lock
// is taken back: asking has cost it.
void SharedBlock::Let_Name_Go_If_Last(Patience patience) {
    if (lock_path_.empty() || opener_ != getpid()) return;
    const NamesLock names(lock_path_, patience == Patience::Give_Up ? 0 : Patience_For_Names);
    if (!names.Held()) return;
    if (Somebody_Holds(descriptor_)) {
        Lock_File(descriptor_, LOCK_SH);
        return;
    }
    unlink(path_.c_str());
    path_.resize(path_.rfind('/'));
    rmdir(path_.c_str());
    lock_path_.clear();
}

void *SharedBlock::Contents() {
    if (!contents_) contents_ = Map(descriptor_, size_);
    return contents_;
}
