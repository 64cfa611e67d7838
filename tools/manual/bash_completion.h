#pragma once
// Completion for bash, made from the command tree: commands, options, and files, folders and choices where
// the tree asks for them.

#include <CLI/CLI.hpp>
#include <string>

namespace tools {

/// A script to be sourced; `_kelmara` completes what stands in COMP_WORDS.
std::string Bash_Completion(const CLI::App &root);

} // namespace tools
