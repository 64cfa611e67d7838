#pragma once
// What ./dev run lets its caller vary.

#include <string>

struct RoadOptions {
    std::string folder;
    std::string string_table = "english.ltx"; // of the status texts
    std::string location;                     // to dial from; empty: the configuration's own
    std::string configuration = "Home";
};

/// Of the command line. False, with the usage on standard error, for what cannot be understood; `options` are
/// of no use then.
bool Read_Options(int argc, char **argv, RoadOptions &options);
