#pragma once
// Arguments taken as they are given, where the parser has ideas of its own.

#include <CLI/CLI.hpp>

namespace tools {

/// A list of places: "[a,b]" is one element and not two. As such a list never is at its end, words that
/// commands have are elements too.
inline CLI::Option *Each_Whole(CLI::Option *list) {
    constexpr int Many = CLI::detail::expected_max_vector_size;
    return list->expected(Many, Many)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

/// An empty text is no number; of its own accord the parser takes it for one that is not given.
inline CLI::Option *Never_Empty(CLI::Option *number) {
    return number->check(
        [](const std::string &text) { return std::string(text.empty() ? "wants a number" : ""); });
}

} // namespace tools
