#pragma once
// The time now in the machine's measure: 100 nanoseconds since the year 1601.

#include <cstdint>
#include <ctime>

inline std::uint64_t File_Time_Now() {
    constexpr std::uint64_t Seconds_From_1601_To_1970 = 11644473600u;
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return (static_cast<std::uint64_t>(now.tv_sec) + Seconds_From_1601_To_1970) * 10000000u +
           static_cast<std::uint64_t>(now.tv_nsec / 100);
}
