#include <platform/files.h>
#include <platform/files/host_error.h>
#include <platform/files/paths.h>
#include <platform/files/system_folders.h>
#include <platform/kernel.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace {

constexpr std::size_t Largest_File = 1 << 20;
constexpr char Blanks[] = " \t";
constexpr char Line_Ends[] = {'\r', '\n', '\0'};

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string_view Without_Quotes(std::string_view value) {
    const bool quoted = value.size() > 1 && (value.front() == '"' || value.front() == '\'');
    return quoted && value.front() == value.back() ? value.substr(1, value.size() - 2) : value;
}

struct Line {
    bool is_section = false;
    std::string_view name, value; // empty names for what is neither a section nor a key
};

Line Line_Of(std::string_view text) {
    text = Trimmed(text);
    if (text.starts_with('[')) return {true, Trimmed(text.substr(1, text.find(']') - 1)), {}};
    const std::size_t equals = text.find('=');
    if (text.starts_with(';') || equals == std::string_view::npos) return {};
    return {false, Trimmed(text.substr(0, equals)), Trimmed(text.substr(equals + 1))};
}

// The lines of a file, one after another.
class Lines {
  public:
    explicit Lines(std::string_view text) : rest_(text) {}

    bool Next(Line &line) {
        if (rest_.empty()) return false;
        const std::size_t end = rest_.find_first_of(std::string_view(Line_Ends, sizeof Line_Ends));
        line = Line_Of(rest_.substr(0, end));
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return true;
    }
    bool Find_Section(std::string_view name) {
        Line line;
        while (Next(line)) {
            if (line.is_section && Equal_Without_Case(line.name, name)) return true;
        }
        return false;
    }
    /// False at the section's end.
    bool Next_Key(Line &line) {
        while (Next(line) && !line.is_section) {
            if (!line.name.empty()) return true;
        }
        return false;
    }

  private:
    std::string_view rest_;
};

long Find_File(LPCSTR file, HostPlace &place) {
    const std::string name = file && *file ? file : "win.ini";
    const bool bare = name.find_first_of("\\/:") == std::string::npos;
    return Find_Place((bare ? std::string(Windows_Folder) + '\\' + name : name).c_str(), place);
}

long Read_Profile(LPCSTR name, std::string &text) {
    HostPlace place;
    if (const long error = Find_File(name, place); error != NO_ERROR) return error;
    const FileDescriptor file(open(place.host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0) {
        return errno == ENOENT ? ERROR_FILE_NOT_FOUND : Error_At(place.host_path, errno);
    }
    if (!S_ISREG(status.st_mode)) return ERROR_ACCESS_DENIED;
    char bytes[16384];
    ssize_t got;
    while (text.size() < Largest_File && (got = read(file.Get(), bytes, sizeof bytes)) != 0) {
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Error_Of_Errno(errno);
        text.append(bytes, static_cast<std::size_t>(got));
    }
    text.resize(std::min(text.size(), Largest_File));
    return NO_ERROR;
}

DWORD Give_Cut(std::string_view text, LPSTR out, DWORD size) {
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    std::char_traits<char>::move(out, text.data(), length); // the fallback may stand in the buffer
    out[length] = '\0';
    return static_cast<DWORD>(length);
}

// `list` holds texts with a terminator each.
DWORD Give_List(const std::string &list, LPSTR out, DWORD size) {
    std::memset(out, 0, std::min<DWORD>(size, 2));
    if (size < 2) return 0;
    if (list.size() + 1 > size) {
        std::memcpy(out, list.data(), size - 2);
        out[size - 2] = out[size - 1] = '\0';
        return size - 2;
    }
    std::memcpy(out, list.c_str(), list.size() + 1);
    return static_cast<DWORD>(list.size());
}

std::string Section_Names(std::string_view text) {
    std::string list;
    Lines lines(text);
    for (Line line; lines.Next(line);) {
        if (line.is_section && !line.name.empty()) list.append(line.name) += '\0';
    }
    return list;
}

// Of the section that `lines` stands in.
std::string Key_Names(Lines &lines) {
    std::string list;
    for (Line line; lines.Next_Key(line);) list.append(line.name) += '\0';
    return list;
}

std::optional<std::string_view> Find_Value(Lines &lines, std::string_view key) {
    for (Line line; lines.Next_Key(line);) {
        if (Equal_Without_Case(line.name, key)) return Without_Quotes(line.value);
    }
    return {};
}

std::string_view Without_Blanks_Behind(std::string_view text) {
    return text.substr(0, text.find_last_not_of(Blanks) + 1);
}

// Nothing is written when there is nothing: the fallback may stand in the buffer.
long Give_What_Is_There(LPCSTR section, LPCSTR key, LPSTR out, DWORD size, LPCSTR file, DWORD &length) {
    std::string text;
    if (const long error = Read_Profile(file, text); error != NO_ERROR) return error;
    if (!section) return length = Give_List(Section_Names(text), out, size), NO_ERROR;
    Lines lines(text);
    if (!lines.Find_Section(Trimmed(section))) return ERROR_FILE_NOT_FOUND;
    if (!key) return length = Give_List(Key_Names(lines), out, size), NO_ERROR;
    const auto value = Find_Value(lines, Trimmed(key));
    if (!value) return ERROR_FILE_NOT_FOUND;
    length = Give_Cut(*value, out, size);
    return NO_ERROR;
}

} // namespace

extern "C" {

DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR fallback, LPSTR out, DWORD size,
                               LPCSTR file) {
    if (!out || size == 0) return 0;
    DWORD length = 0;
    const long error = Code_Of([&] { return Give_What_Is_There(section, key, out, size, file, length); });
    if (error == NO_ERROR) return length;
    SetLastError(static_cast<DWORD>(error));
    return Give_Cut(Without_Blanks_Behind(fallback ? fallback : ""), out, size);
}
}
