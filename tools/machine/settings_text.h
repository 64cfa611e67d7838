#pragma once
// The text of machine.conf: what a new one says, and what in one means nothing to the machine.

#include <string>
#include <string_view>
#include <vector>

namespace tools {

struct SettingFault {
    unsigned long line;
    std::string text;
};
/// Lines that are no settings, and known settings with values that the machine does not know. Other names are
/// for whoever asks for them.
std::vector<SettingFault> Faults_In_Settings(std::string_view text);

/// Empty, or why the machine would not take this value for this setting.
std::string Fault_Of_Setting(const std::string &name, const std::string &value);

/// "800x600" or "800x600x16" as lines of settings. False when it is neither.
bool Screen_Settings(const std::string &screen, std::string &lines);
/// "d=cdrom". False when it is none.
bool Drive_Setting_Line(const std::string &drive, std::string &lines);

} // namespace tools
