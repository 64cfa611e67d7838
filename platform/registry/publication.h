#pragma once
// How far the registry's file goes, as all processes of the machine see it: one word of shared memory.
//
// The upper half is the generation of the file, the lower half the end of its records. Written by who holds
// the lock file's lock, read by anybody at any time. 0 when nobody has published anything since the first
// process came.

#include <platform/kernel/shared_block.h>

#include <atomic>
#include <memory>

class Publication {
  public:
    /// On the machine that this process is on; a code of errors.h.
    long Open();
    void Close();
    explicit operator bool() const { return word_ != nullptr; }

    /// 0 also when it is not open.
    std::uint64_t Get() const { return word_ ? word_->load(std::memory_order_acquire) : 0; }
    void Set(std::uint64_t published) {
        if (word_ && Get() != published) word_->store(published, std::memory_order_release);
    }

    static constexpr std::uint64_t Of(std::uint32_t generation, std::uint32_t end) {
        return static_cast<std::uint64_t>(generation) << 32 | end;
    }
    static constexpr std::uint32_t Generation(std::uint64_t published) {
        return static_cast<std::uint32_t>(published >> 32);
    }
    static constexpr std::uint32_t End(std::uint64_t published) {
        return static_cast<std::uint32_t>(published);
    }

  private:
    std::unique_ptr<SharedBlock> block_;
    std::atomic<std::uint64_t> *word_ = nullptr; // at offset 0 of the block
};
