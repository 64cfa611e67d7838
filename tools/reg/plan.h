#pragma once
// What has to change for the registry to be as it is asked for: everything asked is played through on what
// the registry has, and only the differences remain. Nothing is changed here, and nothing that is as asked is
// touched. Keys that are reached by two ways (HKEY_CLASSES_ROOT is a key of HKEY_LOCAL_MACHINE) are one.

#include <tools/reg/change.h>
#include <tools/reg/text_reader.h>

#include <map>

namespace tools::reg {

class Plan {
  public:
    Plan();

    /// False when there is none: nothing to do. Fails with 2 for a root and what leads to one.
    bool Delete_Key(const KeyPath &path);
    /// Makes the key too, and what leads to it.
    void Set_Value(const KeyPath &path, const std::string &name, Value value);
    /// False when there is none.
    bool Delete_Value(const KeyPath &path, const std::string &name);

    /// Sections as a file has them, whose name failures tell.
    void Do(std::vector<Section> sections, const std::string &file);

    /// Keys before what is below them, each with its values; what is deleted comes last and the other way
    /// round. The plan is over with it.
    std::vector<Change> Take_Changes();

  private:
    struct Slot {
        std::string name;
        std::optional<Value> before, now;
    };
    struct Node {
        KeyPath path; // as it was first asked for
        bool before, now, values_read = false;
        std::string class_name;
        std::map<std::string, Slot> values; // by the capitals of their names
    };
    using Nodes = std::map<std::string, Node>;

    std::string Place_Of(const KeyPath &path) const;
    Nodes::iterator Node_Of(const KeyPath &path);
    Node &Made(const KeyPath &path);
    void Read_Values(Node &node);
    void Read_All(const std::vector<KeyPath> &keys);
    Slot &Slot_Of(Node &node, const std::string &name);
    void Add_Value_Changes(Node &node, bool deletions, std::vector<Change> &changes);

    std::vector<std::pair<const Root *, std::string>> places_of_roots_;
    Nodes nodes_; // by the capitals of their whole paths, with zero bytes for the backslashes
};

} // namespace tools::reg
