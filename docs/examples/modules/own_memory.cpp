// A memory companion: the library binds these five routines by their names. It knows nothing of the library.
#include <cstdio>
#include <cstdlib>

#define COMPANION_EXPORT extern "C" [[gnu::visibility("default")]]

static long handed_out = 0;

// Once, before any other routine. It must not come back to the library for memory.
COMPANION_EXPORT void Initialize() {
    std::puts("own memory is bound");
}

// The largest `long` is below what the heap would try to serve; a size below 0 is never to be had.
COMPANION_EXPORT void *m_alloc(long size) {
    if (size < 0) return nullptr;
    ++handed_out;
    return std::malloc(size > 0 ? static_cast<std::size_t>(size) : 1);
}

COMPANION_EXPORT void *m_alloc_clear(long size) {
    if (size < 0) return nullptr;
    ++handed_out;
    return std::calloc(1, size > 0 ? static_cast<std::size_t>(size) : 1);
}

// Null leaves the old block as it is. A size of 0 keeps a block: the heap would take it for a release.
COMPANION_EXPORT void *m_realloc(void *block, long size) {
    if (!block) return m_alloc(size);
    return size < 0 ? nullptr : std::realloc(block, size > 0 ? static_cast<std::size_t>(size) : 1);
}

// Null is handed on by the library.
COMPANION_EXPORT void m_free(void *block) {
    std::free(block);
}

// Beyond the contract: for whoever asks for it by name.
COMPANION_EXPORT long m_total_blocks() {
    return handed_out;
}
