#pragma once
// What is on the machine, as lists to go through. Nothing here takes part in it.

#include <platform/machine_contents.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tools {

/// A block with all that have it open but this process.
struct SharedBlockInUse {
    MachineBlock block;
    std::vector<unsigned long> processes;
};
/// Those that nobody but this process has open are left out, but for what killed processes left.
std::vector<SharedBlockInUse> Shared_Blocks();
std::vector<MachineTopWindow> Top_Windows();
std::vector<MachineClass> Offered_Classes();

/// Its program's file name; "?" when it cannot be told.
std::string Program_Of(unsigned long process);
/// "123 dialer, 456 server"
std::string Programs_Of(const std::vector<unsigned long> &processes);

/// A path or name of the host as JSON wants it: as it is where it is UTF-8, byte for byte otherwise.
std::string Host_Text(const std::string &text);

/// The bytes of a mapping as they stood at one moment, during which `is_in_change` saw no change under way.
/// Where there is none for a while, or ever, they are what was seen last, and `is_steady` is false. Nothing
/// when the mapping is not there.
struct SeenMapping {
    std::string bytes;
    bool is_steady;
};
std::optional<SeenMapping> See_Mapping(const char *name, unsigned long size,
                                       bool (*is_in_change)(const std::string &bytes));

} // namespace tools
