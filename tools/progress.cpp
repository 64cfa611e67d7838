#include <tools/interruption.h>
#include <tools/progress.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace tools {

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t Bar_Width = 30;

/// The terminal's line, whichever object it tells of.
struct Line {
    Clock::time_point next; // when it may be written; not known yet before the first object
    bool stands = false, is_free = true;
};
constinit Line line;

std::string Bar(std::size_t done, std::size_t total) {
    const auto part = static_cast<double>(std::min(done, total)) / static_cast<double>(total);
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(Bar_Width));
    char percent[16];
    std::snprintf(percent, sizeof percent, "] %3d %%", static_cast<int>(part * 100));
    return "[" + std::string(filled, '#') + std::string(Bar_Width - filled, '.') + percent;
}

void Wipe() {
    if (std::exchange(line.stands, false)) std::fputs("\r\033[K", stderr);
}

} // namespace

Progress::Progress(std::string what, std::size_t total)
    : what_(std::move(what)), total_(total), terminal_(isatty(STDERR_FILENO) == 1) {
    if (line.next == Clock::time_point()) line.next = Clock::now() + 1s;
}

Progress::~Progress() {
    Wipe();
}

void Progress::Step(std::size_t count) {
    done_ += count;
    End_If_Interrupted();
    if (terminal_ && line.is_free && Clock::now() >= line.next) Show();
}

void Progress::Show() {
    const std::string how_far = total_ > 0 ? Bar(done_, total_) : std::to_string(done_);
    std::fprintf(stderr, "\r\033[K%s %s", what_.c_str(), how_far.c_str());
    line.stands = true;
    line.next = Clock::now() + 100ms;
}

void Make_Room_On_Terminal(bool stays_within_line) {
    Wipe();
    line.is_free = !stays_within_line;
}

} // namespace tools
