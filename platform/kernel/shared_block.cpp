#include <platform/kernel/shared_block.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/block_names_lock.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/open_folder.h>

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>

namespace {

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

SharedBlock::SharedBlock(FileDescriptor file, Place place, std::uint32_t size)
    : file_(std::move(file)), opener_(getpid()), place_(std::move(place)), size_(size) {}

SharedBlock::Opened SharedBlock::Refused(long error) {
    return {nullptr, false, error};
}

SharedBlock::Opened SharedBlock::Open(SharedBlockKind kind, const std::string &name, std::uint32_t size,
                                      SharedBlockMaking making) {
    if (name.empty() || name.size() > Longest_Block_Name || size == 0)
        return Refused(ERROR_INVALID_PARAMETER);
    const std::string machine = Machine_Folder_Path();
    const std::string folder = Shared_Memory_Folder_Path();
    if (machine.empty()) return Refused(Why_No_Machine(ERROR_PATH_NOT_FOUND));
    Place place = {folder + "/" + Block_File_Name(name), machine + "/names.lock"};

    const BlockNamesLock names(place.lock_path);
    if (names.Error() != NO_ERROR) return Refused(names.Error());
    if (making.existing_only && Is_Nothing_There(folder)) return Refused(ERROR_FILE_NOT_FOUND);
    if (const long error = Make_Private_Folder(folder)) return Refused(error);
    Opened opened;
    const FolderInUse in_use{folder, opened.block};
    if (Is_First_Opening(folder)) Throw_Away_What_Nobody_Holds(folder);

    FileDescriptor existing = Open_Own_File(place.path, O_RDWR, Open_To_Anybody_Else);
    if (!existing && errno != ENOENT) {
        opened.error = Error_Of_Errno(errno);
    } else if (existing && Somebody_Holds(existing.Get())) {
        opened = Share(std::move(existing), New_Block_Header(kind, name, size), std::move(place));
    } else if (making.existing_only) {
        opened.error = ERROR_FILE_NOT_FOUND;
    } else {
        opened = Make(New_Block_Header(kind, name, size), making, std::move(place));
    }
    return opened;
}

SharedBlock::Opened SharedBlock::Share(FileDescriptor existing, const SharedBlockHeader &wanted,
                                       Place place) {
    SharedBlockHeader header;
    if (const long error = Read_Held_Header(existing.Get(), wanted, header)) return Refused(error);
    if (!Lock_File(existing.Get(), LOCK_SH)) return Refused(ERROR_ACCESS_DENIED);
    Opened opened;
    opened.block.reset(new SharedBlock(std::move(existing), std::move(place), header.size));
    return opened;
}

// Nobody holds it: what lies there was left by the killed. The lock comes last, so that a block whose maker
// is killed before it is complete is held by nobody either.
SharedBlock::Opened SharedBlock::Make(const SharedBlockHeader &header, SharedBlockMaking making,
                                      Place place) {
    unlink(place.path.c_str());
    FileDescriptor file = Open_Own_File(place.path, O_RDWR | O_CREAT | O_EXCL);
    if (!file) return Refused(Error_Of_Errno(errno));
    std::unique_ptr<SharedBlock> block(new SharedBlock(std::move(file), {}, header.size));
    const bool worked_on = making.prepare || making.first_use;
    const bool complete = Reserve(block->Descriptor(), header.size) && (!worked_on || block->Contents());
    if (complete && making.prepare) making.prepare(block->Contents());
    if (!complete || !Write_Block_Header(block->Descriptor(), header) ||
        !Lock_File(block->Descriptor(), LOCK_SH)) {
        const long error = Error_Of_Errno(errno);
        unlink(place.path.c_str());
        return Refused(error);
    }
    block->place_ = std::move(place);
    if (making.first_use) making.first_use(block->Contents());
    return {std::move(block), true, NO_ERROR};
}

SharedBlock::Opened SharedBlock::Make_Private(std::uint32_t size, SharedBlockMaking making) {
    if (size == 0) return Refused(ERROR_INVALID_PARAMETER);
    FileDescriptor file(memfd_create("kelmara-private-block", MFD_CLOEXEC));
    if (!file || !Reserve(file.Get(), size)) return Refused(Error_Of_Errno(errno));
    std::unique_ptr<SharedBlock> block(new SharedBlock(std::move(file), {}, size));
    if ((making.prepare || making.first_use) && !block->Contents()) return Refused(ERROR_COMMITMENT_LIMIT);
    if (making.prepare) making.prepare(block->Contents());
    if (making.first_use) making.first_use(block->Contents());
    return {std::move(block), true, NO_ERROR};
}

SharedBlock::~SharedBlock() {
    if (contents_) munmap(contents_, size_);
    Let_Name_Go_If_Last();
}

// The file goes with its last holder, and the folder with its last file. Where others hold it the shared lock
// is taken back: asking has cost it.
void SharedBlock::Let_Name_Go_If_Last(Patience patience) {
    if (place_.lock_path.empty() || opener_ != getpid()) return;
    const BlockNamesLock names(place_.lock_path,
                               patience == Patience::Give_Up ? 0 : BlockNamesLock::Longest_Wait);
    if (!names.Held()) return;
    if (Somebody_Holds(Descriptor())) {
        Lock_File(Descriptor(), LOCK_SH);
        return;
    }
    unlink(place_.path.c_str());
    place_.path.resize(place_.path.rfind('/'));
    rmdir(place_.path.c_str());
    place_.lock_path.clear();
}

void *SharedBlock::Contents() {
    if (!contents_) contents_ = Map(Descriptor(), size_);
    return contents_;
}
