#pragma once
// Ctrl-C, kill and a terminal that is gone, without anything half done: a signal is noted, and the command
// ends at the next place where it looks, with its objects taken down in order. Then the process ends by that
// signal.

namespace tools {

/// Thrown by End_If_Interrupted; main lets it through and then ends the process by the signal.
struct Interrupted {
    int signal;
};

/// From here on SIGHUP, SIGINT and SIGTERM are noted, unless they were ignored when the process began, and
/// writing to a closed pipe, or more to a file than the user may, fails instead of ending the process.
void Note_Interruptions();

/// To be called in every loop that can take long, and after waits.
void End_If_Interrupted();

/// Waits at most that long; ends it early, and the command, when a signal comes.
void Pause_Or_End(unsigned milliseconds);

/// Ends the process by `signal` as if it had never been noted.
[[noreturn]] void End_By(int signal);

} // namespace tools
