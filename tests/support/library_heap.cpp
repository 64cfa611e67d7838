#include <tests/support/library_heap.h>

#include <cstdlib>

namespace {

struct Watch {
    std::vector<std::pair<std::size_t, void *>> live;
    long until_failure = 0, refused = 0;
    bool for_ever = false;
};

Watch *watch = nullptr;

bool Is_Refused() {
    if (watch->until_failure == 0 || --watch->until_failure > 0) return false;
    watch->until_failure = watch->for_ever ? 1 : 0;
    ++watch->refused;
    return true;
}

void *Remember(void *block, std::size_t size) {
    if (block) watch->live.emplace_back(size, block);
    return block;
}

void *Watched_Malloc(std::size_t size) {
    return Is_Refused() ? nullptr : Remember(std::malloc(size), size);
}

void *Watched_Calloc(std::size_t count, std::size_t size) {
    return Is_Refused() ? nullptr : Remember(std::calloc(count, size), count * size);
}

void Forget(void *block) {
    std::erase_if(watch->live, [&](const auto &entry) { return entry.second == block; });
}

void Watched_Free(void *block) {
    Forget(block);
    std::free(block);
}

void *Watched_Realloc(void *block, std::size_t size) {
    if (Is_Refused()) return nullptr;
    Forget(block);
    return Remember(std::realloc(block, size), size);
}

} // namespace

LibraryHeap::LibraryHeap()
    : malloc_("libkelmara.so", "malloc", reinterpret_cast<void *>(Watched_Malloc)),
      calloc_("libkelmara.so", "calloc", reinterpret_cast<void *>(Watched_Calloc)),
      realloc_("libkelmara.so", "realloc", reinterpret_cast<void *>(Watched_Realloc)),
      free_("libkelmara.so", "free", reinterpret_cast<void *>(Watched_Free)) {
    watch = new Watch;
}

LibraryHeap::~LibraryHeap() {
    delete watch;
    watch = nullptr;
}

void LibraryHeap::Fail(long nth, bool for_ever) {
    watch->until_failure = nth;
    watch->for_ever = for_ever;
    watch->refused = 0;
}

long LibraryHeap::Refused() {
    return watch->refused;
}

std::vector<char *> LibraryHeap::Blocks(std::size_t size) {
    std::vector<char *> blocks;
    for (const auto &[live_size, block] : watch->live) {
        if (live_size == size) blocks.push_back(static_cast<char *>(block));
    }
    return blocks;
}

long LibraryHeap::Live_Blocks() {
    return static_cast<long>(watch->live.size());
}
