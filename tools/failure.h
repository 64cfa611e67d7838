#pragma once
// How a command ends before its work is done: with a text for standard error and one of three exit codes.

#include <stdexcept>
#include <string>

namespace tools {

enum ExitCode {
    Exit_Success = 0,
    Exit_Negative = 1, // what was asked for is not there, or a check failed
    Exit_Unusable = 2, // the command was not understood, or something cannot be read or written
};

/// Thrown anywhere in a command. `text` is shown as "kelmara: text".
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string &text) : std::runtime_error(text), code_(code) {}
    ExitCode Code() const { return code_; }

  private:
    ExitCode code_;
};

/// A file that an argument names, as texts for people call it.
inline std::string Shown_Name(const std::string &file) {
    return file == "-" ? "standard input" : file;
}

/// What a line of a file makes impossible: shown as "file:line: text", without a name in front.
class FaultInFile : public Failure {
  public:
    FaultInFile(const std::string &file, unsigned long line, const std::string &text)
        : Failure(Exit_Unusable, Shown_Name(file) + ":" + std::to_string(line) + ": " + text) {}
};

} // namespace tools
