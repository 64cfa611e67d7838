#include <tools/command.h>
#include <tools/log/log_commands.h>

#include <tools/interruption.h>
#include <tools/json.h>
#include <tools/log/broadcasts.h>
#include <tools/log/log_file_view.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/tables/columns.h>
#include <tools/tables/machine_view.h>
#include <tools/tables/shared_images.h>

#include <platform/machine.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>

namespace tools {

namespace {

constexpr unsigned Between_Looks = 200; // milliseconds
constexpr std::size_t Lines_In_Front = 10;
constexpr std::size_t Most_Bytes_Shown = 64;

struct Options {
    bool once = false, json = false, only_entries = false, only_messages = false;
    long last = -1; // entries that stand there already; below 0: all with --once, otherwise the last ten
    std::vector<std::string> codes;
};

using Codes = std::vector<long>; // empty: all

Codes Codes_Of(const Options &options) {
    Codes codes;
    for (const std::string &text : options.codes) {
        long code = 0;
        if (!Read_Code(text, code))
            throw Failure(Exit_Unusable, "--code " + text + ": neither a number nor four characters");
        codes.push_back(code);
    }
    return codes;
}

std::string Time_Now() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local = {};
    localtime_r(&now.tv_sec, &local);
    char date[32], time[40];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    std::snprintf(time, sizeof time, "%s.%03ld", date, now.tv_nsec / 1000000);
    return time;
}

std::string Hex_Of(const std::string &bytes) {
    std::string hex;
    for (const char c : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        hex += digits;
    }
    return hex;
}

// A message is often a text with its terminator.
std::string Data_Shown(std::string data) {
    if (data.ends_with('\0')) data.pop_back();
    const auto is_text = [](char c) { return static_cast<unsigned char>(c) >= ' ' && c != 0x7F; };
    if (std::all_of(data.begin(), data.end(), is_text)) return data.empty() ? "" : " \"" + data + "\"";
    const bool cut = data.size() > Most_Bytes_Shown;
    return " " + Hex_Of(data.substr(0, Most_Bytes_Shown)) + (cut ? "..." : "");
}

void Print_One(const LogEntry &entry, bool json) {
    if (json) {
        const Json line = {{"kind", "entry"},
                           {"time", Utf8_Of(entry.time)},
                           {"process", entry.process},
                           {"program", Utf8_Of(entry.program)},
                           {"text", Utf8_Of(entry.text)},
                           {"markup", Utf8_Of(entry.markup)}};
        return Print_Line(line.dump());
    }
    std::string text = entry.text;
    for (std::size_t at = 0; (at = text.find('\n', at)) != text.npos; at += 5) text.replace(at, 1, "\n    ");
    std::string shown, line;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        shown += (begin == 0 ? "" : "\n") + Shown(text.substr(begin, end - begin));
        begin = end + 1;
    }
    Print_Line(Shown(entry.time) + "  " + Shown(entry.program) + " " + std::to_string(entry.process) + "  " +
               shown);
}

void Print_Lost(long count) {
    Print_Line("... " + std::to_string(count) + " messages were lost");
}

void Print_One(const Broadcast &message, bool json) {
    const std::string program = Program_Of(message.sender);
    if (json) {
        const Json line = {{"kind", "message"},
                           {"time", Time_Now()},
                           {"process", message.sender},
                           {"program", Host_Text(program)},
                           {"code", message.code},
                           {"size", message.data.size()},
                           {"data", Hex_Of(message.data)},
                           {"lost", message.lost}};
        return Print_Line(line.dump());
    }
    if (message.lost > 0) Print_Lost(message.lost);
    Print_Line(Time_Now() + "  " + Shown(program) + " " + std::to_string(message.sender) + "  message " +
               Code_Text(message.code) + ", " + std::to_string(message.data.size()) + " bytes" +
               Data_Shown(message.data));
}

void Print_New(LogFileView &file, bool json) {
    file.Look([json](const LogEntry &entry) { Print_One(entry, json); });
}

void Print_Last(LogFileView &file, std::size_t most, bool json) {
    std::deque<LogEntry> last;
    file.Look([&](const LogEntry &entry) {
        last.push_back(entry);
        if (last.size() > most) last.pop_front();
    });
    for (const LogEntry &entry : last) Print_One(entry, json);
}

// What was lost in front of one that is not wanted is told at once; in JSON, with the next that is (`lost`).
void Print_Messages(BroadcastListener &listener, const Codes &codes, bool json, long &lost) {
    for (Broadcast &message : listener.Take()) {
        const bool wanted =
            codes.empty() || std::find(codes.begin(), codes.end(), message.code) != codes.end();
        message.lost += std::exchange(lost, 0);
        if (wanted)
            Print_One(message, json);
        else if (json)
            lost = message.lost;
        else if (message.lost > 0)
            Print_Lost(message.lost);
    }
}

ExitCode Show_Once(const Options &options) {
    LogFileView file;
    if (!file.Is_There()) throw Failure(Exit_Negative, file.Path() + ": nothing has been written yet");
    if (options.last < 0)
        Print_New(file, options.json);
    else
        Print_Last(file, static_cast<std::size_t>(options.last), options.json);
    return Exit_Success;
}

// The listener comes first, so that nothing is missed between the look and its beginning.
[[noreturn]] void Follow(const Options &options, const Codes &codes) {
    LogFileView file;
    Leave_Machine(); // what the listener needs it opens itself
    BroadcastListener listener;
    const bool hears = !options.only_entries && listener.Begin();
    if (!hears && options.only_messages)
        throw Failure(Exit_Negative, "the suite has no log companion that takes listeners");
    if (!hears && !options.only_entries)
        std::fputs("kelmara: no log companion takes listeners: messages are not heard\n", stderr);
    const std::size_t in_front = options.last < 0 ? Lines_In_Front : static_cast<std::size_t>(options.last);
    if (!options.only_messages) Print_Last(file, in_front, options.json);
    long lost = 0;
    for (;;) {
        if (!options.only_messages) Print_New(file, options.json);
        if (hears) Print_Messages(listener, codes, options.json, lost);
        Flush_Output();
        Pause_Or_End(Between_Looks);
    }
}

ExitCode Show_Log(const Options &options) {
    Require_Machine();
    const Codes codes = Codes_Of(options);
    if (options.once) return Show_Once(options);
    Follow(options, codes);
}

} // namespace

void Add_Log(CommandTree &tree) {
    auto options = std::make_shared<Options>();
    CLI::App *log = tree.Add(
        "log", "follows the suite's log and the messages that its programs broadcast, until interrupted");
    CLI::Option *once = log->add_flag("--once", options->once, "shows the entries that are there, and ends");
    log->add_option("--last", options->last,
                    "begins with so many of the entries that are there; 10 without it, all with --once")
        ->check(CLI::NonNegativeNumber)
        ->type_name("COUNT");
    log->add_option("--code", options->codes,
                    "only messages with this code: a number, or four characters; may be given again")
        ->type_name("CODE")
        ->excludes(once);
    CLI::Option *entries =
        log->add_flag("--entries", options->only_entries, "no messages; then no listener takes part");
    log->add_flag("--messages", options->only_messages, "no entries")->excludes(entries)->excludes(once);
    log->add_flag("--json", options->json, "as JSON, each on a line of its own");
    tree.Does(log, [options] { return Show_Log(*options); });
    tree.Tells(
        log, "OUTPUT",
        "Entries come from log.html in the suite's root folder. Messages are heard by way of the suite's "
        "log companion, as its other listeners do, from the command's start on: those sent before "
        "are nowhere kept. Hearing takes one of the 64 places for listeners.");
    tree.Tells(log, "EXAMPLES",
               "    kelmara log --once --json | jq -r .text\n"
               "    kelmara log --messages --code 0x8002 --code CONN");
}

} // namespace tools
