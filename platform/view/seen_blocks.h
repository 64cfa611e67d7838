#pragma once
// Blocks of shared memory seen from outside: read, and neither locked nor held.

#include <platform/kernel/shared_block.h>

#include <map>
#include <vector>

/// Which processes have which files locked, as the host tells it. A list that changes while it is read can
/// lack an entry.
class LockHolders {
  public:
    /// May throw std::bad_alloc.
    LockHolders();
    /// Each once. Empty when nobody has, and where the host does not tell.
    std::vector<std::uint32_t> Of(int descriptor) const;

  private:
    struct File {
        unsigned major_number, minor_number;
        unsigned long long number;
        auto operator<=>(const File &) const = default;
    };
    std::multimap<File, std::uint32_t> holders_;
};

/// The folder that blocks and the list of classes lie in; it may not be there. ERROR_ACCESS_DENIED when it,
/// or the machine itself, was refused, and `without_machine` when there is none.
long Find_Shared_Folder(std::string &folder, long without_machine);

/// The contents of a block that somebody has open, to be read only.
class SeenBlock {
  public:
    /// Empty, with the last error, when there is none of that name and kind. May throw std::bad_alloc.
    SeenBlock(SharedBlockKind kind, const std::string &name);
    ~SeenBlock();
    SeenBlock(const SeenBlock &) = delete;
    SeenBlock &operator=(const SeenBlock &) = delete;

    explicit operator bool() const { return contents_ != nullptr; }
    const void *Contents() const { return contents_; }
    std::uint32_t Size() const { return size_; }

  private:
    void *contents_ = nullptr;
    std::uint32_t size_ = 0;
};
