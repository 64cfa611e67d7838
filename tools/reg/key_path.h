#pragma once
// The path of a key from one of the machine's roots: "HKLM\Software" or "HKEY_LOCAL_MACHINE\Software".

#include <platform/registry.h>

#include <string>
#include <vector>

namespace tools::reg {

/// Names compare by their capitals, and stand in the order of these.
std::string Capitals_Of(std::string name);

struct Root {
    const char *name, *short_name;
    HKEY key;
};
/// All that can be used.
const std::vector<Root> &Roots();

struct KeyPath {
    const Root *root = nullptr;
    std::vector<std::string> names;

    /// With the long name of the root.
    std::string Text() const;
    /// As the calls of the registry want it.
    std::string Below_Root() const;
};

/// Letter case of the root does not matter; backslashes at the end, and more than one between two names, mean
/// nothing. Gives what is wrong, with `path` as it was, or an empty text.
std::string Read_Key_Path(const std::string &text, KeyPath &path);

/// The same for an argument of a command: fails with 2.
KeyPath Key_Path_Of(const std::string &argument);

} // namespace tools::reg
