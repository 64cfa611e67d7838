#include <tools/tables/watching.h>

#include <tools/interruption.h>
#include <tools/machine_choice.h>

#include <platform/machine.h>

#include <ctime>
#include <unistd.h>

namespace tools {

namespace {

constexpr unsigned Between_Looks = 250; // milliseconds
constexpr char Clear_Screen[] = "\033[H\033[2J\033[3J";

std::string Time_Now() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

std::string State_Of(const View &view, bool json) {
    if (json) return view.json.dump() + "\n";
    return view.missing.empty() ? view.text : view.missing + "\n";
}

[[noreturn]] void Watch(bool json, const std::function<View()> &look) {
    const bool terminal = isatty(STDOUT_FILENO) == 1;
    Leave_Machine();
    for (std::string before;;) {
        std::string now = State_Of(look(), json);
        if (now != before) {
            if (terminal && !json) Print(Clear_Screen);
            if (!json) Print_Line("-- " + Time_Now());
            Print(now);
            Flush_Output();
            before.swap(now);
        }
        Pause_Or_End(Between_Looks);
    }
}

} // namespace

void ViewOptions::Add_To(CLI::App &command) {
    command.add_flag("--watch", watch, "shows it again whenever it changes, until interrupted");
    command.add_flag("--json", json, "as JSON; with --watch, each state on a line of its own");
}

ExitCode Show(const ViewOptions &options, const std::function<View()> &look) {
    Require_Machine();
    if (options.watch) Watch(options.json, look);
    const View view = look();
    if (!view.missing.empty()) throw Failure(Exit_Negative, view.missing);
    if (options.json)
        Print_Json(view.json);
    else
        Print(view.text);
    return Exit_Success;
}

} // namespace tools
