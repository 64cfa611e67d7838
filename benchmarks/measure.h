#pragma once
// Measures our way of doing something against a peer's, both in this process and in turns.
//
//     measure::Use_Plain_Memory();
//     measure::Heading("strings", "std::string");
//     measure::Compare("copy 24 characters",
//                      MEASURED { measure::Keep(CSafeStr(measure::Hidden(text))); },
//                      MEASURED { measure::Keep(std::string(measure::Hidden(text))); }, 0.25);
//
// The limit is the greatest ratio of ours to the peer's that is wanted: 0.25 is at least 4 times as fast, 2.0
// no slower than 2 times. A row that misses it says so; the program ends well all the same, for a figure is
// for people to judge. growth.h measures how a time grows. One thread only.

#include <benchmarks/report.h>

#include <kelmara/foundation/memory.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <vector>

/// Begins a piece of work, a lambda that sees everything around it and stands inside the loop that times it:
/// without a call, which would be a good part of what takes a few nanoseconds.
#define MEASURED [&]() __attribute__((always_inline))

namespace measure {

inline constexpr int Rounds = 31;         // medians of this many; each side has one run in a round
inline constexpr int Few_Rounds = 11;     // where a single call takes longer than this:
inline constexpr double Long_Call = 1e7;  // nanoseconds
inline constexpr int Single_Calls = 2001; // medians of this many where calls are timed one by one
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

/// What the processor has worked for this process: a call that is longer than the host lets a process work at
/// a time would grow by the others' turns as well.
struct ProcessorClock {
    using Point = std::chrono::duration<double, std::nano>;
    static Point now() {
        timespec time;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return Point(static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec));
    }
};

/// Nanoseconds that one call takes, from `calls` of them. One loop for each piece of work, the same one
/// always.
template <class Clock = std::chrono::steady_clock, class Work>
[[gnu::noinline]] double Time(Work &work, long calls) {
    const auto start = Clock::now();
    for (long call = 0; call < calls; ++call) work();
    const std::chrono::duration<double, std::nano> taken = Clock::now() - start;
    return taken.count() / static_cast<double>(calls);
}

/// The same at another place of the stack for each round. Where the stack lies to the heap and to the cache's
/// lines is drawn by lot when the program starts, and an unlucky place can cost as much as the work itself.
template <class Clock = std::chrono::steady_clock, class Work>
[[gnu::noinline]] double Time_In_Round(int round, Work &work, long calls) {
    Keep(*static_cast<char *>(__builtin_alloca(static_cast<std::size_t>(16 + round * 272))));
    return Time<Clock>(work, calls);
}

struct Plan {
    long calls; // that fill a run
    int rounds;
};

template <class Work>
Plan Plan_For(Work &work) {
    long calls = 1;
    double one_call = Time<ProcessorClock>(work, calls);
    while (one_call * static_cast<double>(calls) < Run_Length / 10)
        one_call = Time<ProcessorClock>(work, calls *= 4);
    return {std::max(1L, static_cast<long>(Run_Length / one_call)),
            one_call > Long_Call ? Few_Rounds : Rounds};
}

/// The figure with that part of the others below it. Changes their order.
inline double Quantile(std::vector<double> &figures, double part) {
    const auto place = figures.begin() + static_cast<long>(part * static_cast<double>(figures.size()));
    std::nth_element(figures.begin(), place, figures.end());
    return *place;
}

inline double Median(std::vector<double> &figures) {
    return Quantile(figures, 0.5);
}

/// Times both in turns, also within a round: whoever comes second finds the other's data in the cache.
template <class Ours, class Peer>
void Report_In_Turns(const char *what, int rounds, Ours time_ours, Peer time_peer, double limit) {
    std::vector<double> our_figures(rounds), peer_figures(rounds), ratios(rounds);
    for (int round = 0; round < rounds; ++round) {
        if (round % 2 == 0) our_figures[round] = time_ours(round);
        peer_figures[round] = time_peer(round);
        if (round % 2 != 0) our_figures[round] = time_ours(round);
        ratios[round] = our_figures[round] / peer_figures[round];
    }
    const double spread = (Quantile(ratios, 0.75) - Quantile(ratios, 0.25)) / Median(ratios);
    Report(what, {Median(our_figures), Median(peer_figures), spread, rounds}, limit);
}

/// Measures and prints a row: nanoseconds of one call of each, the ratio of the medians, the wanted limit.
/// What counts is the processor's time, so that other programs' turns do not; what waits is for
/// Compare_Calls.
template <class Ours, class Peer>
void Compare(const char *what, Ours ours, Peer peer, double limit) {
    const Plan our_plan = Plan_For(ours), peer_plan = Plan_For(peer);
    Report_In_Turns(
        what, std::min(our_plan.rounds, peer_plan.rounds),
        [&](int round) { return Time_In_Round<ProcessorClock>(round, ours, our_plan.calls); },
        [&](int round) { return Time_In_Round<ProcessorClock>(round, peer, peer_plan.calls); }, limit);
}

/// The same of single calls by the clock on the wall. The median is of so many that one in which the host
/// lets others run counts no more than any other.
template <class Ours, class Peer>
void Compare_Calls(const char *what, Ours ours, Peer peer, double limit, int calls = Single_Calls) {
    Report_In_Turns(
        what, calls, [&](int) { return Time(ours, 1); }, [&](int) { return Time(peer, 1); }, limit);
}

/// Single calls that nothing stands beside, each after `before`.
template <class Before, class Work>
void Measure_Calls(const char *what, Before before, Work work, double limit, int calls = Single_Calls) {
    std::vector<double> figures(calls);
    for (double &figure : figures) {
        before();
        figure = Time(work, 1);
    }
    Report_Alone(what, Median(figures), calls, limit);
}

} // namespace measure
