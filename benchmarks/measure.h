#pragma once
// Measures our way of doing something against a peer's, both in this process and in turns.
//
//     measure::Use_Plain_Memory();
//     measure::Heading("strings");
//     measure::Compare("copy 24 characters",
//                      MEASURED { measure::Keep(CSafeStr(measure::Hidden(text))); },
//                      MEASURED { measure::Keep(std::string(measure::Hidden(text))); }, 0.25);
//
// The limit is the greatest ratio of ours to the peer's that is wanted: 0.25 is at least 4 times as fast, 2.0
// no slower than 2 times. A row that misses it says so; the program ends well all the same, for a figure is
// for people to judge. One thread only.

#include <kelmara/foundation/memory.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

/// Begins a piece of work, a lambda that sees everything around it and stands inside the loop that times it:
/// without a call, which would be a good part of what takes a few nanoseconds.
#define MEASURED [&]() __attribute__((always_inline))

namespace measure {

inline constexpr int Rounds = 31;         // medians of this many; each side has one run in a round
inline constexpr double Run_Length = 1e6; // nanoseconds, about

/// The compiler must assume that all of `value` is used, and that all memory may have changed behind it.
template <class Value>
void Keep(const Value &value) {
    asm volatile("" : : "r"(&value) : "memory");
}

/// `value`, of which the compiler knows nothing any more.
template <class Value>
Value Hidden(Value value) {
    asm volatile("" : "+r"(value) : : "memory");
    return value;
}

/// Binds the memory services to the C library's heap, where std::string and its kin have theirs. Before
/// anything else of the library is used.
inline void Use_Plain_Memory() {
    Set_Local_Memory_Procs(
        [](long size) { return std::malloc(static_cast<std::size_t>(size)); },
        [](long size) { return std::calloc(1, static_cast<std::size_t>(size)); },
        [](void *block, long size) { return std::realloc(block, static_cast<std::size_t>(size)); },
        [](void *block) { std::free(block); });
}

/// Nanoseconds that one call takes, from `calls` of them. One loop for each piece of work, the same one
/// always.
template <class Work>
[[gnu::noinline]] double Time(Work &work, long calls) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    for (long call = 0; call < calls; ++call) work();
    const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
    return taken.count() / static_cast<double>(calls);
}

/// The same at another place of the stack for each round. Where the stack lies to the heap and to the cache's
/// lines is drawn by lot when the program starts, and an unlucky place can cost as much as the work itself.
template <class Work>
[[gnu::noinline]] double Time_In_Round(int round, Work &work, long calls) {
    Keep(*static_cast<char *>(__builtin_alloca(static_cast<std::size_t>(16 + round * 272))));
    return Time(work, calls);
}

/// How many calls fill a run.
template <class Work>
long Calls_In_Run(Work &work) {
    long calls = 1;
    double one_call = Time(work, calls);
    while (one_call * static_cast<double>(calls) < Run_Length / 10) one_call = Time(work, calls *= 4);
    return std::max(1L, static_cast<long>(Run_Length / one_call));
}

inline double Median(double (&figures)[Rounds]) {
    std::nth_element(figures, figures + Rounds / 2, figures + Rounds);
    return figures[Rounds / 2];
}

inline void Heading(const char *title) {
    std::printf("\n%-48s %12s %12s %8s %8s\n", title, "ours, ns", "peer, ns", "ratio", "wanted");
}

/// Measures and prints a row: nanoseconds of one call of each, the ratio of the medians, the wanted limit.
template <class Ours, class Peer>
void Compare(const char *what, Ours ours, Peer peer, double limit) {
    const long our_calls = Calls_In_Run(ours);
    const long peer_calls = Calls_In_Run(peer);
    double our_figures[Rounds], peer_figures[Rounds];
    for (int round = 0; round < Rounds; ++round) {
        // In turns also within a round: whoever comes second finds the other's data in the cache.
        if (round % 2 == 0) our_figures[round] = Time_In_Round(round, ours, our_calls);
        peer_figures[round] = Time_In_Round(round, peer, peer_calls);
        if (round % 2 != 0) our_figures[round] = Time_In_Round(round, ours, our_calls);
    }
    const double our_median = Median(our_figures);
    const double peer_median = Median(peer_figures);
    const double ratio = our_median / peer_median;
    std::printf("%-48s %12.1f %12.1f %8.2f %8.2f%s\n", what, our_median, peer_median, ratio, limit,
                ratio <= limit ? "" : "  missed");
    std::fflush(stdout);
}

} // namespace measure
