// A process may be started without standard descriptors. Whatever it opens first would then be taken for
// them, and a message for standard error would be written into a file of the machine.

#include <fcntl.h>
#include <unistd.h>

namespace {

[[gnu::constructor]] void Fill_Standard_Descriptors() {
    for (int next = 0; next <= STDERR_FILENO;) {
        next = open("/dev/null", O_RDWR); // the lowest that is free
        if (next < 0) return;
        if (next > STDERR_FILENO) close(next);
    }
}

} // namespace
