#pragma once
// The machine's telephony service, asked directly: for what the library's calls do not tell, the settings of
// its dialling locations and how it came to a translation.

#include <platform/telephony.h>

#include <optional>
#include <string>
#include <vector>

namespace tools {

struct DialLocation {
    DWORD id;
    std::string name;
    std::string local_access, long_distance_access, cancel_call_waiting;
    bool dials_pulses;
};

struct DialLocations {
    std::vector<DialLocation> all;
    DWORD current;

    /// Null where there is none.
    const DialLocation *Named(const std::string &name) const;
    const DialLocation *Current() const;
};

struct Translation {
    LONG error = 0; // LINEERR_
    std::string dialable, displayable;
    DWORD results = 0; // LINETRANSLATERESULT_
    DWORD destination_country = 0;
    DWORD size = 0; // of the record that it takes
};

/// A line application of its own, which lives as long as the process.
class TelephonyService {
  public:
    /// Fails with 1 where there is no service, and with 2 where it does not answer.
    TelephonyService();

    DialLocations Locations() const;
    /// From the current location, with call waiting cancelled, as the library asks for it.
    Translation Translate(const std::string &number) const;

  private:
    HMODULE module_;
    HLINEAPP application_ = 0;
};

/// What went wrong, for a code of telephony.
std::string Telephony_Error(LONG error);

} // namespace tools
