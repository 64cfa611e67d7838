#include <platform/registry/store.h>

#include <platform/errors.h>
#include <platform/kernel/machine_state.h>
#include <platform/registry/file_time.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>

namespace {

constexpr std::uint32_t Least_Compacted_File = 1u << 20;
constexpr std::size_t Kept_Buffer = 1u << 20;

} // namespace

RegistryStore &RegistryStore::Of_This_Process() {
    // Never destroyed: exit routines may still ask for keys.
    static RegistryStore *store = [] {
        auto *made = new RegistryStore;
        (void)std::atexit([] { Of_This_Process().Let_Go(); });
        return made;
    }();
    return *store;
}

// --- reading ----------------------------------------------------------------------------------------------

RegistryStore::Reading::Reading()
    : store_(Of_This_Process()),
      hold_(store_.Hold_For_Reading()),
      error_(store_.Is_Current() ? NO_ERROR : store_.Look_At_File(hold_)) {}

std::unique_lock<std::mutex> RegistryStore::Hold_For_Reading() {
    if (writer_waits_.load(std::memory_order_relaxed)) {
        std::lock_guard turn(turn_);
    }
    return std::unique_lock(replica_lock_);
}

void RegistryStore::Hold_Before_Readers(std::unique_lock<std::mutex> &hold) {
    std::lock_guard turn(turn_);
    writer_waits_.store(true, std::memory_order_relaxed);
    hold.lock();
    writer_waits_.store(false, std::memory_order_relaxed);
}

bool RegistryStore::Is_Current() {
    if (!publication_ || !replica_.file || machine_ != Machine_Serial()) return false;
    const std::uint64_t published = publication_.Get();
    return published == seen_ || Follow(published);
}

// Reads what was published since, or the file that took the old one's place. False when the file and what is
// published are at odds.
bool RegistryStore::Follow(std::uint64_t published) {
    const std::uint32_t generation = Publication::Generation(published);
    const std::uint32_t end = Publication::End(published);
    if (end < Records_Offset || end % 8 != 0) return false;
    if (generation == replica_.file->Header().generation) {
        if (end < replica_.end || replica_.Read(end, end, path_) != NO_ERROR) return false;
    } else {
        Replica fresh;
        if (fresh.Open(path_) != NO_ERROR || !fresh.file) return false;
        if (fresh.file->Header().generation != generation) return false;
        if (fresh.Read(end, end, path_) != NO_ERROR) return false;
        replica_ = std::move(fresh);
        folder_flushed_ = false;
    }
    seen_ = published;
    return true;
}

// The replica's lock is let go meanwhile.
long RegistryStore::Look_At_File(std::unique_lock<std::mutex> &hold) {
    hold.unlock();
    std::lock_guard writers(writers_);
    Hold_Before_Readers(hold);
    if (const long error = Enter_Current_Machine()) return error;
    hold.unlock();
    Writing::FileLock file_lock;
    const bool locked = lock_file_ && file_lock.Take(lock_file_.Get());
    Hold_Before_Readers(hold);
    const long error = Settle(locked);
    if (!error && !replica_.file && locked && !Why_Not_Writable()) (void)Rewrite(hold);
    return error;
}

// --- writing ----------------------------------------------------------------------------------------------

bool RegistryStore::Writing::FileLock::Take(int descriptor) {
    if (!Lock_File(descriptor, LOCK_EX)) return false;
    held_ = descriptor;
    return true;
}

RegistryStore::Writing::FileLock::~FileLock() {
    if (held_ >= 0) Lock_File(held_, LOCK_UN);
}

RegistryStore::Writing::Writing()
    : store_(Of_This_Process()),
      writers_(store_.writers_),
      hold_(store_.replica_lock_, std::defer_lock),
      error_(Begin()) {}

long RegistryStore::Writing::Begin() {
    store_.Hold_Before_Readers(hold_);
    if (const long error = store_.Enter_Current_Machine()) return error;
    if (const long error = store_.Why_Not_Writable()) return error;
    hold_.unlock();
    const bool locked = file_lock_.Take(store_.lock_file_.Get());
    store_.Hold_Before_Readers(hold_);
    if (!locked) return ERROR_ACCESS_DENIED;
    if (const long error = store_.Settle(true)) return error;
    if (!store_.replica_.file) return store_.Rewrite(hold_);
    if (store_.file_size_ == store_.replica_.end) return NO_ERROR;
    store_.file_size_ = store_.replica_.end;
    return store_.replica_.file->Cut(store_.replica_.end);
}

long RegistryStore::Writing::Commit(std::span<const RegistryRecord> records) {
    if (const long error = store_.Append(records)) return error;
    if (store_.Wants_Compaction()) store_.Compact(hold_);
    return NO_ERROR;
}

long RegistryStore::Append(std::span<const RegistryRecord> records) {
    const StoreFile &file = *replica_.file;
    const std::uint32_t start = replica_.end;
    bytes_.clear();
    for (const RegistryRecord &record : records) {
        Append_Record(record, file.Header().number, start + static_cast<std::uint32_t>(bytes_.size()),
                      bytes_);
    }
    if (bytes_.size() > Largest_Registry_File - start) return ERROR_DISK_FULL;
    if (const long error = file.Write(start, bytes_.data(), bytes_.size())) {
        (void)file.Cut(start); // or else the next writer does
        return error;
    }
    try {
        for (const RegistryRecord &record : records) replica_.tree->Apply(record);
    } catch (...) {
        (void)file.Cut(start);
        replica_ = {};
        throw;
    }
    replica_.end = file_size_ = start + static_cast<std::uint32_t>(bytes_.size());
    Publish();
    if (bytes_.capacity() > Kept_Buffer) std::vector<unsigned char>().swap(bytes_);
    return NO_ERROR;
}

// --- compaction -------------------------------------------------------------------------------------------

// Near the largest size the file is kept tighter. What a rewriting costs was written since the last one,
// times a constant.
bool RegistryStore::Wants_Compaction() const {
    const std::uint32_t end = replica_.end;
    if (end < Least_Compacted_File || end < compact_from_) return false;
    const std::uint32_t dead = end - std::min(end, Records_Offset + replica_.tree->Live_Size());
    return dead > end / 2 || (end > Largest_Registry_File / 4 * 3 && dead > end / 8);
}

// When it fails the old file stands, and is tried again when it has grown.
void RegistryStore::Compact(std::unique_lock<std::mutex> &hold) {
    compact_from_ = replica_.end + replica_.end / 4;
    try {
        if (Rewrite(hold) == NO_ERROR) compact_from_ = 0;
    } catch (const std::bad_alloc &) {
    }
}

// The file anew, or for the first time, from the tree. Both locks of writers are held, so the tree stands
// still while readers are let in during the wait for the disk.
long RegistryStore::Rewrite(std::unique_lock<std::mutex> &hold) {
    const std::uint32_t before = replica_.file ? replica_.file->Header().generation : 0;
    const std::uint32_t generation = std::max(before, Publication::Generation(publication_.Get())) + 1;
    WrittenAside written = Write_Aside(path_, *replica_.tree, generation);
    if (written.error) return written.error;
    hold.unlock();
    const long error = Put_In_Place(path_, *written.file);
    Hold_Before_Readers(hold);
    if (error) return error;
    replica_.file = std::move(written.file);
    replica_.end = file_size_ = written.end;
    folder_flushed_ = false;
    Publish();
    return NO_ERROR;
}

// --- the file ---------------------------------------------------------------------------------------------

// Brings the replica to where the file stands. Without the lock there is nobody to tell of it.
long RegistryStore::Settle(bool locked) {
    struct stat status;
    const bool there = lstat(path_.c_str(), &status) == 0;
    if (!there && errno != ENOENT) return Refuse(Registry_Error_Of_Errno(errno, ERROR_READ_FAULT));
    if (!there || (S_ISREG(status.st_mode) && status.st_size == 0)) {
        replica_.file = nullptr;
        file_size_ = 0;
        if (!replica_.tree) replica_.tree = std::make_unique<KeyTree>(File_Time_Now());
        return NO_ERROR;
    }
    if (status.st_size > Largest_Registry_File) return Refuse(ERROR_BADDB);
    const auto size = static_cast<std::uint32_t>(status.st_size);
    if (!replica_.file || !replica_.file->Is(status) || size < replica_.end) {
        Replica fresh;
        if (const long error = fresh.Open(path_)) return Refuse(error);
        if (!fresh.file) return Refuse(ERROR_CANTOPEN);
        replica_ = std::move(fresh);
        folder_flushed_ = false;
    }
    const std::uint32_t settled = Published_End();
    if (size > replica_.end) {
        const long error = replica_.Read(size, settled <= size ? settled : 0, path_);
        if (error) return Refuse(error);
    }
    file_size_ = size;
    if (locked) Publish();
    return NO_ERROR;
}

// Nothing is known of the registry from here on; the file is not touched.
long RegistryStore::Refuse(long error) {
    replica_ = {};
    if (error == ERROR_BADDB && !refusal_reported_) {
        refusal_reported_ = true;
        Report_Machine_Trouble(path_ + ": not a registry of this machine; it is left as it is");
    }
    return error;
}

// How far the file that is open is known to have been whole.
std::uint32_t RegistryStore::Published_End() const {
    const std::uint64_t published = publication_.Get();
    const std::uint32_t end = Publication::End(published);
    return Publication::Generation(published) == replica_.file->Header().generation && end % 8 == 0 ? end : 0;
}

void RegistryStore::Publish() {
    seen_ = Publication::Of(replica_.file->Header().generation, replica_.end);
    publication_.Set(seen_);
}

long RegistryStore::Flush() {
    std::shared_ptr<StoreFile> file;
    std::string folder;
    {
        Reading reading;
        if (reading.Error() || !replica_.file) return reading.Error();
        file = replica_.file;
        if (!folder_flushed_) folder = folder_;
    }
    if (!folder.empty()) {
        if (const long error = Flush_Folder(folder)) return error;
        if (const long error = Flush_Folder(folder + "/..")) return error;
    }
    if (const long error = file->Flush()) return error;
    std::lock_guard guard(replica_lock_);
    if (replica_.file == file) folder_flushed_ = true;
    return NO_ERROR;
}
