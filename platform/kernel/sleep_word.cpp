#include <platform/kernel/sleep_word.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr long long Look_Milliseconds = 2;

struct HostTime { // which the newer calls have at every word size
    long long seconds, nanoseconds;
};

HostTime Moment_After(long long milliseconds) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long long nanoseconds = now.tv_nsec + milliseconds % 1000 * 1000000;
    return {now.tv_sec + milliseconds / 1000 + nanoseconds / 1000000000, nanoseconds % 1000000000};
}

void Sleep_On_One(const SleepWord &sleep, long long milliseconds) {
    struct {
        long seconds, nanoseconds; // the host's old form, which this call has at this word size
    } limit = {static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000000)};
    syscall(SYS_futex, sleep.word, FUTEX_WAIT, sleep.seen, &limit, nullptr, 0);
}

// False when the host has no such sleep, for whatever reason.
bool Sleep_On_Several(const SleepWord *words, unsigned count, long long milliseconds) {
    futex_waitv waited[Most_Sleep_Words] = {};
    for (unsigned i = 0; i < count; ++i) {
        waited[i].val = words[i].seen;
        waited[i].uaddr = reinterpret_cast<std::uintptr_t>(words[i].word);
        waited[i].flags = FUTEX_32;
    }
    const HostTime limit = Moment_After(milliseconds);
    if (syscall(SYS_futex_waitv, waited, count, 0, &limit, CLOCK_MONOTONIC) >= 0) return true;
    return errno == EAGAIN || errno == ETIMEDOUT || errno == EINTR;
}

} // namespace

void Sleep_On(const SleepWord *words, unsigned count, long long milliseconds) {
    if (count == 1) return Sleep_On_One(words[0], milliseconds);
    if (Sleep_On_Several(words, count, milliseconds)) return;
    if (std::any_of(words, words + count, [](const SleepWord &each) { return each.Has_Moved(); })) return;
    Sleep_On_One(words[count - 1], std::min(milliseconds, Look_Milliseconds));
}

void Wake_One(std::atomic<std::uint32_t> &word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

void Wake_All(std::atomic<std::uint32_t> &word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}
