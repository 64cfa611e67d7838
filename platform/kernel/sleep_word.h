#pragma once
// Words in memory that threads sleep on, until a thread of whatever process moves one on and wakes them.

#include <platform/types.h>

#include <atomic>

struct SleepWord {
    std::atomic<std::uint32_t> *word = nullptr;
    std::uint32_t seen = 0; // what it was when there was no reason to stay awake

    bool Has_Moved() const { return word->load(std::memory_order_seq_cst) != seen; }
};

inline constexpr unsigned Most_Sleep_Words = 64;

/// Sleeps until one of the words is woken, not at all if one has moved on; may return early. Where the host
/// does not let a thread sleep on several words (it can from Linux 5.16 on), a sleep on more than one is at
/// most 2 ms long, and sees a wake of the last word alone before that.
void Sleep_On(const SleepWord *words, unsigned count, long long milliseconds);

void Wake_One(std::atomic<std::uint32_t> &word);
void Wake_All(std::atomic<std::uint32_t> &word);
