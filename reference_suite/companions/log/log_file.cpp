#include <reference_suite/companions/log/log_file.h>

#include <reference_suite/companions/log/entry_markup.h>

#include <platform/registry.h>
#include <platform/runtime.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <new>

namespace {

constexpr DWORD Longest_Wait = 2000; // milliseconds
constexpr std::size_t Longest_Text = 8192;
constexpr off_t Longest_Torn_Line = 65536; // longer than any line that is written here

constexpr std::string_view Head =
    "<!DOCTYPE html><html><head><meta charset=\"windows-1252\"><title>Kelmara log</title><style>"
    "body{font:14px/1.5 sans-serif;margin:2em;max-width:80em}"
    "p{margin:0;padding:.2em .5em;border-bottom:1px solid #ddd;overflow-wrap:anywhere}"
    "p:nth-child(even){background:#f6f6f6}time{font-family:monospace;color:#666}"
    ".process{color:#069}.lost{color:#a00}</style></head><body>\n";

struct KeyCloser {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
struct StreamCloser {
    void operator()(FILE *stream) const { Machine_Close_Stream(stream); }
};
using Stream = std::unique_ptr<FILE, StreamCloser>;

long Find_Root_Folder(std::string &folder) {
    HKEY opened = nullptr;
    long error = RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Dunmerit Software\\KelMara", 0, KEY_QUERY_VALUE,
                               &opened);
    if (error != ERROR_SUCCESS) return error;
    const std::unique_ptr<HKEY__, KeyCloser> key(opened);
    char text[MAX_PATH + 1] = {}; // the value need not be terminated
    DWORD size = MAX_PATH;
    error = RegQueryValueExA(opened, "Root", nullptr, nullptr, reinterpret_cast<BYTE *>(text), &size);
    if (error != ERROR_SUCCESS) return error;
    folder = text;
    if (folder.empty()) return ERROR_FILE_NOT_FOUND;
    if (!folder.ends_with('\\')) folder += '\\';
    return NO_ERROR;
}

std::string This_Process() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string_view name = path;
    return std::string(name.substr(name.rfind('\\') + 1)) + " " + std::to_string(GetCurrentProcessId());
}

std::string Time_Now() {
    const auto now =
        std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local = {};
    localtime_r(&seconds, &local);
    char date[40], time[50];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(time, sizeof time, "%s.%03d", date,
                  static_cast<int>(now.time_since_epoch().count() % 1000));
    return time;
}

// Null unless it is there, or could be made.
Stream Open_Or_Make(const std::string &path) {
    Stream stream(Machine_Open_Stream(path.c_str(), "r+b"));
    if (!stream && errno == ENOENT) stream.reset(Machine_Open_Stream(path.c_str(), "w+b"));
    return stream;
}

struct Tail {
    off_t begin; // behind the last line end, 0 without one
    off_t end;
};

bool Find_Tail(FILE *stream, Tail &tail) {
    if (fseeko(stream, 0, SEEK_END) != 0 || (tail.end = ftello(stream)) < 0) return false;
    char block[4096];
    for (tail.begin = tail.end; tail.begin > 0;) {
        const off_t size = std::min<off_t>(tail.begin, sizeof block);
        const auto bytes = static_cast<std::size_t>(size);
        if (fseeko(stream, tail.begin - size, SEEK_SET) != 0) return false;
        if (std::fread(block, 1, bytes, stream) != bytes) return false;
        const std::size_t found = std::string_view(block, bytes).rfind('\n');
        if (found != std::string_view::npos) {
            tail.begin += static_cast<off_t>(found) + 1 - size;
            return true;
        }
        tail.begin -= size;
    }
    return true;
}

// What is to stand at the tail's begin so that it becomes `lines`, which end in a line end, and no more.
std::string Text_At(Tail &tail, const std::string &lines) {
    const off_t torn = tail.end - tail.begin;
    if (torn > Longest_Torn_Line) { // not torn by a writer of ours: it stays
        tail.begin = tail.end;
        return "\n" + lines;
    }
    std::string text(tail.begin == 0 ? Head : "");
    text += lines;
    if (text.size() < static_cast<std::size_t>(torn))
        text.insert(text.size() - 1, static_cast<std::size_t>(torn) - text.size(), ' ');
    return text;
}

} // namespace

long LogFile::Open(std::shared_ptr<LogFile> &file) {
    auto opened = std::make_shared<LogFile>();
    if (const long error = Find_Root_Folder(opened->path_); error != NO_ERROR) return error;
    opened->path_ += "log.html";
    opened->process_ = Markup_Of(This_Process());
    opened->lock_.reset(CreateMutexA(nullptr, FALSE, "KELMARA-LOG-FILE"));
    if (!opened->lock_) return static_cast<long>(GetLastError());
    file = std::move(opened);
    return NO_ERROR;
}

void LogFile::Write(std::string_view text) {
    const unsigned long lost = lost_.exchange(0);
    bool written = false;
    try {
        written = Append(Lines_Of(text.substr(0, Longest_Text), lost));
    } catch (const std::bad_alloc &) {
    }
    if (!written) lost_ += lost + 1;
}

std::string LogFile::Lines_Of(std::string_view text, unsigned long lost) const {
    const std::string stamp =
        "<p><time>" + Time_Now() + "</time> <span class=\"process\">" + process_ + "</span> ";
    std::string lines;
    if (lost > 0)
        lines = stamp + "<span class=\"lost\">" + std::to_string(lost) + " entries were lost</span></p>\n";
    return lines + stamp + Markup_Of(text) + "</p>\n";
}

bool LogFile::Append(const std::string &lines) {
    const MutexLock lock(lock_, Longest_Wait);
    if (!lock) return false;
    Stream stream = Open_Or_Make(path_);
    Tail tail;
    if (!stream || !Find_Tail(stream.get(), tail)) return false;
    const std::string text = Text_At(tail, lines);
    return fseeko(stream.get(), tail.begin, SEEK_SET) == 0 &&
           std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size() &&
           Machine_Close_Stream(stream.release()) == 0;
}
