#include <platform/registry/publication.h>

#include <platform/errors.h>

namespace {
// Users' names of objects have no backslash in them.
constexpr char Block_Name[] = "machine\\registry 1";
} // namespace

#if !defined(__clang__) // the linter, which does not count on the alignment that atomics have here
static_assert(sizeof(std::atomic<std::uint64_t>) == 8 && std::atomic<std::uint64_t>::is_always_lock_free);
#endif

long Publication::Open() {
    SharedBlock::Opened opened =
        SharedBlock::Open(SharedBlockKind::Internal, Block_Name, sizeof(std::uint64_t));
    if (!opened.block) return opened.error;
    if (opened.block->Size() < sizeof(std::uint64_t)) return ERROR_REVISION_MISMATCH;
    void *contents = opened.block->Contents();
    if (!contents) return ERROR_COMMITMENT_LIMIT;
    block_ = std::move(opened.block);
    word_ = static_cast<std::atomic<std::uint64_t> *>(contents);
    return NO_ERROR;
}

void Publication::Close() {
    word_ = nullptr;
    block_.reset();
}
