// The parts of a memory companion that tells its life on standard error. Who includes it says which part is
// left out.

#include <cstdio>
#include <cstdlib>

#define COMPANION_EXPORT extern "C" [[gnu::visibility("default")]]

namespace {
[[gnu::constructor]] void Loaded() {
    std::fputs("loaded\n", stderr);
}
[[gnu::destructor]] void Unloaded() {
    std::fputs("unloaded\n", stderr);
}
} // namespace

#ifndef WITHOUT_INITIALIZE
COMPANION_EXPORT void Initialize() {
    std::fputs("Initialize\n", stderr);
}
#endif
#ifndef WITHOUT_ALLOC
COMPANION_EXPORT void *m_alloc(long size) {
    return std::malloc(static_cast<std::size_t>(size));
}
#endif
#ifndef WITHOUT_ALLOC_CLEAR
COMPANION_EXPORT void *m_alloc_clear(long size) {
    return std::calloc(1, static_cast<std::size_t>(size));
}
#endif
#ifndef WITHOUT_REALLOC
COMPANION_EXPORT void *m_realloc(void *block, long size) {
    return std::realloc(block, static_cast<std::size_t>(size));
}
#endif
#ifndef WITHOUT_FREE
COMPANION_EXPORT void m_free(void *block) {
    std::fputs(block ? "m_free\n" : "m_free(null)\n", stderr);
    std::free(block);
}
#endif
