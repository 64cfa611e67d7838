#include <tools/machine/settings_text.h>

#include <algorithm>
#include <charconv>

namespace tools {

namespace {

constexpr std::string_view Windows_Names[] = {"95", "98", "me", "nt4", "2000", "xp"};
constexpr std::string_view Drive_Kinds[] = {"", "fixed", "removable", "cdrom", "remote", "ramdisk"};
constexpr std::string_view Depths[] = {"1", "4", "8", "16", "24", "32"};
constexpr std::string_view Answers[] = {"yes", "no"};

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string In_Small_Letters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return small;
}

std::string_view Without_Remark(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) return line.substr(0, i);
    }
    return line;
}

template <std::size_t Size>
std::string Fault_Unless_Among(const std::string &value, const std::string_view (&known)[Size]) {
    if (std::find(std::begin(known), std::end(known), In_Small_Letters(value)) != std::end(known)) return "";
    std::string fault = "is none of";
    for (const std::string_view each : known) {
        if (!each.empty()) fault += " " + std::string(each);
    }
    return fault;
}

bool Is_Number(const std::string &text, unsigned long long least, unsigned long long most) {
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= least && number <= most;
}

std::string Fault_Of_Version(const std::string &value) {
    constexpr std::size_t most_digits[] = {3, 3, 5};
    std::size_t count = 0;
    bool good = true;
    for (std::size_t begin = 0; good && begin <= value.size(); ++count) {
        const std::size_t end = std::min(value.find('.', begin), value.size());
        const std::string part = value.substr(begin, end - begin);
        good = count < std::size(most_digits) && !part.empty() && part.size() <= most_digits[count] &&
               part.find_first_not_of("0123456789") == part.npos;
        begin = end + 1;
    }
    return good && count >= 2 ? "" : "is not major.minor or major.minor.build, of 3, 3 and 5 digits at most";
}

std::string Fault_Of_Kind(char drive, const std::string &value) {
    const std::string fault = Fault_Unless_Among(value, Drive_Kinds), small = In_Small_Letters(value);
    const bool heeded = (drive != 'c' && drive != 'z') || small.empty() || small == "fixed";
    return fault.empty() && !heeded ? "is not heeded: this drive is always fixed" : fault;
}

bool Has_Control_Characters(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == 0x7F; });
}

// Empty for a line that is in order.
std::string Fault_Of_Line(std::string_view line) {
    line = Trimmed(Without_Remark(line));
    if (line.empty()) return "";
    const std::size_t equals = line.find('=');
    const std::string name = In_Small_Letters(Trimmed(line.substr(0, equals)));
    if (equals == line.npos || name.empty() || Has_Control_Characters(line))
        return "not a line of \"name = value\"; it is skipped";
    const std::string value(Trimmed(line.substr(equals + 1)));
    const std::string fault = Fault_Of_Setting(name, value);
    return fault.empty() ? "" : name + ": \"" + value + "\" " + fault;
}

} // namespace

std::string Fault_Of_Setting(const std::string &name, const std::string &value) {
    const std::string no_size = "is no size from 1 to 32767", no_bytes = "is no number of bytes";
    if (name == "windows") return Fault_Unless_Among(value, Windows_Names);
    if (name == "windows_version") return Fault_Of_Version(value);
    if (name == "screen_width" || name == "screen_height") return Is_Number(value, 1, 32767) ? "" : no_size;
    if (name == "screen_depth") return Fault_Unless_Among(value, Depths);
    if (name == "administrator") return Fault_Unless_Among(value, Answers);
    const bool is_drive = name.size() >= 7 && name.starts_with("drive_") && name[6] >= 'a' && name[6] <= 'z';
    if (is_drive && name.size() == 7) return Fault_Of_Kind(name[6], value);
    if (is_drive && (name.substr(7) == "_free" || name.substr(7) == "_size"))
        return Is_Number(value, 0, ~0ull) ? "" : no_bytes;
    return "";
}

std::vector<SettingFault> Faults_In_Settings(std::string_view text) {
    std::vector<SettingFault> faults;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    for (unsigned long number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        std::string fault = Fault_Of_Line(text.substr(0, end));
        if (!fault.empty()) faults.push_back({number, std::move(fault)});
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
    }
    return faults;
}

bool Screen_Settings(const std::string &screen, std::string &lines) {
    constexpr const char *names[] = {"screen_width", "screen_height", "screen_depth"};
    std::string settings, rest = screen;
    std::size_t count = 0;
    for (; !rest.empty() && count < std::size(names); ++count) {
        const std::size_t end = std::min(rest.find('x'), rest.size());
        const std::string value = rest.substr(0, end);
        if (!Fault_Of_Setting(names[count], value).empty()) return false;
        settings += std::string(names[count]) + " = " + value + "\n";
        if (end + 1 == rest.size()) return false;
        rest.erase(0, end + 1);
    }
    if (count < 2 || !rest.empty()) return false;
    lines += settings;
    return true;
}

bool Drive_Setting_Line(const std::string &drive, std::string &lines) {
    const std::string small = In_Small_Letters(drive);
    if (small.size() < 3 || small[0] < 'a' || small[0] > 'y' || small[0] == 'c' || small[1] != '=')
        return false;
    const std::string name = "drive_" + small.substr(0, 1), value = small.substr(2);
    if (!Fault_Of_Setting(name, value).empty()) return false;
    lines += name + " = " + value + "\n";
    return true;
}

} // namespace tools
