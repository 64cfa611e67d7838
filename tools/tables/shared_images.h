#pragma once
// The library's two shared tables as they lie in memory, read from a copy of their bytes. Whatever stands in
// the bytes, reading ends and stays within them.

#include <string>
#include <vector>

namespace tools {

inline constexpr char Atom_Block_Name[] = "DS-ATOM-TABLE-HI-MOM";
inline constexpr char Instance_Block_Name[] = "INSTANCESHARE";

struct Atom {
    long slot, group, id;
    std::string data; // up to its last byte that is not zero: nothing tells how much was stored
};
struct AtomImage {
    std::vector<Atom> atoms; // oldest first
    std::vector<std::string> faults;
};
/// Whether a change is under way, or was cut short.
bool Is_In_Change(const std::string &block);
AtomImage Read_Atoms(const std::string &block);

struct Instance {
    std::string key, subkey, title;
    unsigned long window; // 0: being written, or left so by a killed process
};
struct InstanceImage {
    std::vector<Instance> instances; // in the order of their registration
    std::vector<std::string> faults;
};
InstanceImage Read_Instances(const std::string &block);

/// A number as it is, with its four characters where it is made of such.
std::string Code_Text(long number);

} // namespace tools
