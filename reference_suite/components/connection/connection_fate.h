#pragma once
// What becomes of a connection that is made: settings by which a program or a test drives the component. They
// stand as numbers in the key "Connection Fate" below the suite's, and count from the next Connect on:
//
//     Dial Time    milliseconds until it is up or has failed; 0, and at most a minute
//     Result       why it fails, as a machine's code or a failing HRESULT; 0: it comes up
//     Lost After   milliseconds until it is lost by itself; without it, never

#include <platform/types.h>

#include <optional>

inline constexpr char Fate_Key[] = "Software\\Dunmerit Software\\KelMara\\Connection Fate";
inline constexpr DWORD Longest_Dial_Time = 60000;

struct ConnectionFate {
    DWORD dial_time = 0;
    long result = 0; // 0 or a failing HRESULT
    std::optional<DWORD> lost_after;
};

ConnectionFate Read_Connection_Fate();

/// A machine's code as a HRESULT; one that is a HRESULT, and 0, stay.
constexpr long As_Component_Code(DWORD code) {
    constexpr DWORD Failure = 0x80000000, Of_The_Machine = 0x80070000;
    if (code == 0 || (code & Failure)) return static_cast<long>(code);
    return static_cast<long>(Of_The_Machine | (code & 0xFFFF));
}
