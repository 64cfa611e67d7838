#pragma once
// A named block of memory that the processes of one machine share.
//
// Blocks live in the host's shared memory, in a folder of the machine's own, one file each: a page of header,
// then the contents. Every process that has a block open holds a shared lock on its file, which the kernel
// takes back however the process ends; whoever opens a file that nobody holds throws it away and makes a
// fresh one. So a name vanishes with its last holder, and nothing of it outlives a restart of the host.
// Opening and letting go happen under one lock of the whole machine. The first opening of a process throws
// away what all of the killed left. A block that a forked process has inherited is the first one's affair:
// the fork lets go of its memory and no more.

#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/shared_block_header.h>

#include <memory>
#include <string>
#include <sys/types.h>

/// What is done to fresh contents before any other process meets them. A maker killed in `prepare` leaves no
/// block; one killed in `first_use` leaves a whole one.
struct SharedBlockMaking {
    void (*prepare)(void *contents) = nullptr;
    void (*first_use)(void *contents) = nullptr;
    bool existing_only = false; // make nothing: ERROR_FILE_NOT_FOUND when nobody holds the block
};

class SharedBlock {
  public:
    struct Opened {
        std::unique_ptr<SharedBlock> block; // null on failure
        bool fresh = false;                 // made by this call: contents are zero but for what `making` did
        long error = 0;                     // a code of errors.h on failure
    };

    /// Opens the block of that name or makes one of `size` bytes. A block that exists keeps its own size.
    /// Kinds share one space of names. On failure no empty folder is left in the host's shared memory.
    /// ERROR_SHARING_VIOLATION when other threads, or other processes, have the lock of names for five
    /// seconds.
    static Opened Open(SharedBlockKind kind, const std::string &name, std::uint32_t size,
                       SharedBlockMaking making = {});

    /// A block without a name, of this process alone.
    static Opened Make_Private(std::uint32_t size, SharedBlockMaking making = {});

    ~SharedBlock();
    SharedBlock(const SharedBlock &) = delete;
    SharedBlock &operator=(const SharedBlock &) = delete;

    enum class Patience { Wait, Give_Up };
    /// Takes the name away when no other process holds the block; whoever asks for it next gets a fresh one.
    /// The contents stay for this process. Giving up, it leaves the name where another process is busy with
    /// names.
    void Let_Name_Go_If_Last(Patience patience = Patience::Wait);

    /// Contents mapped for the block's lifetime; null when that fails.
    void *Contents();
    std::uint32_t Size() const { return size_; }
    int Descriptor() const { return file_.Get(); }

  private:
    struct Place {
        std::string path;      // empty for a private block
        std::string lock_path; // the machine's lock of names that guards it
    };
    SharedBlock(FileDescriptor file, Place place, std::uint32_t size);
    static Opened Refused(long error);
    static Opened Share(FileDescriptor existing, const SharedBlockHeader &wanted, Place place);
    static Opened Make(const SharedBlockHeader &header, SharedBlockMaking making, Place place);

    FileDescriptor file_;
    pid_t opener_;
    Place place_;
    std::uint32_t size_;
    void *contents_ = nullptr;
};
