#pragma once
// How fault sweeps go on, how much they try, and what they print. Where a fault lacks memory they share one
// loop; those of the calls of the host, which are too many for every run, take some of them, in strides.
//
//     points += Each_Fault([&](unsigned long at, bool for_ever) { return Try_With_Failure(at, for_ever); });

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

/// At the size of a test that runs with all others, or at the full one of ./dev faults.
inline bool At_Full_Size() {
    return std::getenv("KELMARA_FULL_FAULTS") != nullptr;
}

inline constexpr unsigned long Most_Points = 10000;

/// Calls `attempt(at, for_ever)`, which makes the at-th of something fail (1 is the first), alone or with all
/// after it, until the fault is no longer met, which `attempt` answers with false. The faults that were.
/// Fails where there are more than Most_Points, as of what asks again whenever it is refused.
template <class Attempt>
unsigned long Each_Fault(Attempt attempt) {
    unsigned long points = 0;
    for (const bool for_ever : {false, true}) {
        for (unsigned long at = 1; attempt(at, for_ever); ++at, ++points) {
            if (at < Most_Points) continue;
            ADD_FAILURE() << "there is no end of faults" << (for_ever ? ", from each on" : "");
            break;
        }
    }
    return points;
}

/// Every how manieth of `count` things is tried: about `few` of them in all, or at full size `many`, 0 for
/// each. Odd, for things that come in pairs.
inline unsigned long Stride(unsigned long count, unsigned long few, unsigned long many = 0) {
    const unsigned long tried = At_Full_Size() ? many : few;
    return tried == 0 || count <= tried ? 1 : count / tried | 1;
}

inline void Print_Figure(const char *name, unsigned long number) {
    std::printf("%s: %lu\n", name, number);
    std::fflush(stdout);
}
