#include <reference_suite/companions/memory/memory_companion.h>

#include <atomic>
#include <cstdlib>

#define COMPANION_EXPORT [[gnu::visibility("default")]]

namespace {

constinit std::atomic<unsigned long> handed_out{0};
constinit std::atomic<unsigned long> given_back{0};

// The heap counts sizes without a sign: one below 0 would be a huge one that it might try to serve.
void *Counted(void *block) {
    if (block) handed_out.fetch_add(1, std::memory_order_relaxed);
    return block;
}

// The heap takes a size of 0 for a release.
std::size_t At_Least_One(long size) {
    return size > 0 ? static_cast<std::size_t>(size) : 1;
}

} // namespace

extern "C" {

COMPANION_EXPORT void Initialize() {}

COMPANION_EXPORT void *m_alloc(long size) {
    return size < 0 ? nullptr : Counted(std::malloc(At_Least_One(size)));
}

COMPANION_EXPORT void *m_alloc_clear(long size) {
    return size < 0 ? nullptr : Counted(std::calloc(1, At_Least_One(size)));
}

COMPANION_EXPORT void *m_realloc(void *block, long size) {
    if (!block) return m_alloc(size);
    return size < 0 ? nullptr : std::realloc(block, At_Least_One(size));
}

COMPANION_EXPORT void m_free(void *block) {
    if (!block) return;
    given_back.fetch_add(1, std::memory_order_relaxed);
    std::free(block);
}

COMPANION_EXPORT long m_live_blocks() {
    return static_cast<long>(handed_out - given_back);
}

COMPANION_EXPORT long m_total_blocks() {
    return static_cast<long>(handed_out.load());
}
}
