#pragma once
// What the command tree tells of its commands, in the form that manual and completion need.

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tools {

struct ArgumentFacts {
    std::vector<std::string> names; // with their dashes; empty for one that counts by its place
    std::string value;              // what stands for it: "FILE", "a|b"; empty for a flag
    std::string description;
    bool is_required = false, repeats = false;
    enum class Kind { Any, File, Folder } kind = Kind::Any; // as the value's name or type says
    std::vector<std::string> choices;
};

/// The arguments of a command, those by place apart from options, without the hidden ones.
std::vector<ArgumentFacts> Places_Of(const CLI::App &command);
std::vector<ArgumentFacts> Options_Of(const CLI::App &command);
/// The root's options that every command takes.
std::vector<ArgumentFacts> Options_Of_All(const CLI::App &root);

/// The commands right below one.
std::vector<const CLI::App *> Commands_Of(const CLI::App &command);

/// "kelmara reg query".
std::string Full_Name_Of(const CLI::App &command);

/// How the command is written, without its name: "[--json] FILE...".
std::string Synopsis_Of(const CLI::App &command);

} // namespace tools
