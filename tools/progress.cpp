#include <tools/interruption.h>
#include <tools/progress.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace tools {

using namespace std::chrono_literals;

namespace {

constexpr std::size_t Bar_Width = 30;
constexpr std::size_t Steps_Between_Looks = 256;

} // namespace

Progress::Progress(std::string what, std::size_t total)
    : what_(std::move(what)),
      total_(std::max<std::size_t>(total, 1)),
      next_(std::chrono::steady_clock::now() + 1s),
      terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Step() {
    if (++done_ % Steps_Between_Looks != 0) return;
    End_If_Interrupted();
    if (terminal_ && std::chrono::steady_clock::now() >= next_) Show();
}

void Progress::Show() {
    const std::size_t done = std::min(done_, total_);
    const auto part = static_cast<double>(done) / static_cast<double>(total_);
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(Bar_Width));
    const std::string bar = std::string(filled, '#') + std::string(Bar_Width - filled, '.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", what_.c_str(), bar.c_str(), static_cast<int>(part * 100));
    std::fflush(stderr);
    shown_ = true;
    next_ = std::chrono::steady_clock::now() + 100ms;
}

} // namespace tools
