#include <platform/user/shared_windows.h>

#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

// The lock's word: the number of the thread that holds it, or the mark that it ended holding it.
bool ThreadRow::Lives() const {
    const int word = __atomic_load_n(&life.__data.__lock, __ATOMIC_ACQUIRE);
    return (word & FUTEX_TID_MASK) != 0 && !(word & FUTEX_OWNER_DIED);
}

void ThreadRow::Wake() {
    woken.fetch_add(1, std::memory_order_seq_cst);
    syscall(SYS_futex, &woken, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void ThreadRow::Sleep(std::uint32_t seen, DWORD milliseconds) {
    struct {
        long seconds, nanoseconds; // the host's old form, which this call has at this word size
    } limit = {static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
    syscall(SYS_futex, &woken, FUTEX_WAIT, seen, &limit, nullptr, 0);
}
