#pragma once
// Inside the library: the telephony service's entries, found by name when they are first called, and the
// line application that they are called for.
//
// The service's module is loaded by the first of them and stays loaded. What was not there is not looked for
// again: a call of it costs nothing from then on. Threads that race for a first call find the same.

#include <platform/telephony.h>

#include <atomic>

/// 0: not tried yet. Not_There: tried and failed. Otherwise the module's handle, or the entry's address.
using LateBoundWord = std::atomic<unsigned long>;
inline constexpr unsigned long Not_There = 0xFFFFFFFF;

class LateBoundEntry {
  protected:
    explicit constexpr LateBoundEntry(const char *name) : m_Name(name) {}
    /// Null when it is not there.
    FARPROC Find();

  private:
    const char *m_Name;
    LateBoundWord m_Word{0};
};

template <class Signature>
class TelephonyEntry;

template <class... Arguments>
class TelephonyEntry<LONG(Arguments...)> : LateBoundEntry {
  public:
    explicit constexpr TelephonyEntry(const char *name) : LateBoundEntry(name) {}

    /// What the service answers; LINEERR_OPERATIONUNAVAIL when the service or this entry is not there.
    LONG operator()(Arguments... arguments) {
        const auto entry = reinterpret_cast<LONG (*)(Arguments...)>(Find());
        return entry ? entry(arguments...) : LINEERR_OPERATIONUNAVAIL;
    }
};

inline constinit TelephonyEntry<LineGetDevCaps> Line_Get_Dev_Caps{"lineGetDevCaps"};
inline constinit TelephonyEntry<LineGetTranslateCaps> Line_Get_Translate_Caps{"lineGetTranslateCaps"};
inline constinit TelephonyEntry<LineInitialize> Line_Initialize{"lineInitialize"};
inline constinit TelephonyEntry<LineNegotiateAPIVersion> Line_Negotiate_API_Version{
    "lineNegotiateAPIVersion"};
inline constinit TelephonyEntry<LineSetCurrentLocation> Line_Set_Current_Location{"lineSetCurrentLocation"};
inline constinit TelephonyEntry<LineTranslateAddress> Line_Translate_Address{"lineTranslateAddress"};

/// All 0 until Setup_TAPI has run.
struct LineApplication {
    HLINEAPP handle;
    DWORD device_count;
    DWORD api_version;
};
inline constinit LineApplication The_Line_Application{};
