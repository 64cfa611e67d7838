#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/machine_state.h>

#include <platform/kernel/file_descriptor.h>

#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <set>
#include <sys/stat.h>

namespace {

constexpr std::size_t Largest_File = 1 << 20;
constexpr std::size_t Most_Reports = 10;
constexpr time_t Seconds_To_Settle = 2;

using Settings = std::map<std::string, std::string, std::less<>>; // by name in small letters

// Which content of which file was read.
struct Reading {
    unsigned machine = 0;
    dev_t device = 0;
    ino_t file = 0;
    off_t size = -1; // -1: no file
    timespec changed = {}, written = {};

    bool operator==(const Reading &other) const {
        return machine == other.machine && device == other.device && file == other.file &&
               size == other.size && Same(changed, other.changed) && Same(written, other.written);
    }
    // A change within the host's grain of time leaves its stamps as they are, so a fresh one proves nothing.
    bool Settled() const { return size < 0 || std::time(nullptr) - changed.tv_sec > Seconds_To_Settle; }

  private:
    static bool Same(const timespec &left, const timespec &right) {
        return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
    }
};

struct State {
    std::mutex lock;
    Settings overrides;
    Settings from_file;
    Reading reading;
    bool settled = false;
    std::set<unsigned long> reported; // lines of this machine's file; 0 for the file as a whole
};

State &The_State() {
    static State *state = new State;
    return *state;
}

std::string_view Trimmed(std::string_view text) {
    constexpr const char *Blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string Key_Of(std::string_view name) {
    std::string key(Trimmed(name));
    for (char &c : key) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return key;
}

void Report_Once(State &state, const std::string &path, unsigned long line, const char *trouble) {
    if (state.reported.size() > Most_Reports || !state.reported.insert(line).second) return;
    if (state.reported.size() > Most_Reports) {
        Report_Machine_Trouble(path + ": more lines like these; they are skipped");
        return;
    }
    Report_Machine_Trouble(path + (line ? ", line " + std::to_string(line) : std::string()) + ": " + trouble);
}

// A remark begins with a '#' at the line's start or behind a blank.
std::string_view Without_Remark(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) return line.substr(0, i);
    }
    return line;
}

bool Has_Control_Characters(std::string_view text) {
    for (const char c : text) {
        if ((c >= 0 && c < ' ' && c != '\t') || c == 0x7F) return true;
    }
    return false;
}

bool Take_Line(std::string_view line, Settings &settings) {
    line = Trimmed(Without_Remark(line));
    if (line.empty()) return true;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || Has_Control_Characters(line)) return false;
    std::string key = Key_Of(line.substr(0, equals));
    if (key.empty()) return false;
    settings[std::move(key)] = Trimmed(line.substr(equals + 1));
    return true;
}

Settings Settings_In(State &state, const std::string &path, std::string_view text) {
    Settings settings;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    for (unsigned long number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        if (!Take_Line(text.substr(0, end), settings)) {
            Report_Once(state, path, number, "not a line of \"name = value\"; it is skipped");
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return settings;
}

bool Read_All(int descriptor, std::string &text) {
    char bytes[4096];
    for (;;) {
        const ssize_t got = read(descriptor, bytes, sizeof bytes);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        text.append(bytes, static_cast<std::size_t>(got));
        if (text.size() > Largest_File) return false;
    }
}

Reading Reading_Of(const struct stat &status, unsigned machine) {
    Reading reading;
    reading.machine = machine;
    reading.device = status.st_dev;
    reading.file = status.st_ino;
    reading.size = status.st_size;
    reading.changed = status.st_ctim;
    reading.written = status.st_mtim;
    return reading;
}

// False for a passing lack of descriptors: what is known stays then.
bool Read_File(State &state, const std::string &path, Settings &settings) {
    const FileDescriptor file = Open_Own_File(path, O_RDONLY);
    if (!file && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) return false;
    std::string text;
    if (!file && errno == Not_This_Users_Own)
        Report_Once(state, path, 0, "not a file of this user alone; it is left aside");
    else if (file && Read_All(file.Get(), text))
        settings = Settings_In(state, path, text);
    else
        Report_Once(state, path, 0, "cannot be read, or is larger than a megabyte; it is left aside");
    return true;
}

void Refresh(State &state) {
    const unsigned machine = Machine_Serial();
    const std::string folder = Machine_Folder_Path();
    const std::string path = folder + "/machine.conf";
    Reading now;
    struct stat status;
    now.machine = machine;
    if (!folder.empty() && lstat(path.c_str(), &status) == 0) now = Reading_Of(status, machine);
    if (state.settled && now == state.reading) return;

    if (machine != state.reading.machine) {
        state.reported.clear();
        state.from_file.clear();
        state.settled = false;
    }
    Settings settings;
    if (now.size >= 0 && !Read_File(state, path, settings)) return;
    state.from_file.swap(settings);
    state.reading = now;
    state.settled = now.Settled();
}

} // namespace

bool Find_Machine_Setting(std::string_view name, std::string &value) {
    const std::string key = Key_Of(name);
    State &state = The_State();
    std::lock_guard guard(state.lock);
    auto found = state.overrides.find(key);
    if (found == state.overrides.end()) {
        Refresh(state);
        found = state.from_file.find(key);
        if (found == state.from_file.end()) return false;
    }
    value = found->second;
    return true;
}

extern "C" {

bool Get_Machine_Setting(const char *name, char *out, unsigned long size) try {
    std::string value;
    if (!name || !out || !Find_Machine_Setting(name, value) || value.size() >= size) return false;
    std::memcpy(out, value.c_str(), value.size() + 1);
    return true;
} catch (const std::bad_alloc &) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

void Override_Machine_Setting(const char *name, const char *value) try {
    if (!name) return;
    State &state = The_State();
    std::lock_guard guard(state.lock);
    if (value)
        state.overrides[Key_Of(name)] = value;
    else
        state.overrides.erase(Key_Of(name));
} catch (const std::bad_alloc &) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
}
}
