// Whether memory may be read, asked of the host without reading it here.

#include <platform/kernel.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::uintptr_t Page_Size = 4096;
constexpr std::size_t Mask_Size = 8; // bytes of a signal mask

// The host reads a signal mask before it looks at what is to be done with it, which is nothing it knows. The
// mask is not at the page's start: null is no mask, and is not read.
bool Is_Page_Readable(std::uintptr_t page) {
    const int error_before = errno;
    const bool readable =
        syscall(SYS_rt_sigprocmask, ~0, page + Mask_Size, nullptr, Mask_Size) == 0 || errno != EFAULT;
    errno = error_before;
    return readable;
}

} // namespace

extern "C" {

BOOL IsBadReadPtr(const void *bytes, UINT size) {
    if (size == 0) return FALSE;
    const auto first = reinterpret_cast<std::uintptr_t>(bytes);
    std::uintptr_t last;
    if (__builtin_add_overflow(first, size - 1, &last)) return TRUE;
    for (std::uintptr_t page = first & ~(Page_Size - 1);; page += Page_Size) {
        if (!Is_Page_Readable(page)) return TRUE;
        if (last - page < Page_Size) return FALSE;
    }
}

BOOL IsBadStringPtrA(LPCSTR text, UINT most) {
    auto place = reinterpret_cast<std::uintptr_t>(text);
    while (most > 0) {
        if (!Is_Page_Readable(place & ~(Page_Size - 1))) return TRUE;
        const std::size_t in_page = std::min<std::size_t>(most, Page_Size - place % Page_Size);
        if (std::memchr(reinterpret_cast<const char *>(place), 0, in_page)) return FALSE;
        place += in_page;
        most -= static_cast<UINT>(in_page);
    }
    return FALSE;
}
}
