#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/progress.h>
#include <tools/reg/open_key.h>
#include <tools/reg/plan.h>

#include <algorithm>
#include <utility>

namespace tools::reg {

// A zero byte, which no name has, comes before every letter: what is below a key follows it at once.
constexpr char Separator = '\0';

Plan::Plan() {
    for (const Root &root : Roots()) {
        std::string place = Capitals_Of(Whole_Path(root.key, root.name));
        std::replace(place.begin(), place.end(), '\\', Separator);
        places_of_roots_.emplace_back(&root, std::move(place));
    }
}

std::string Plan::Place_Of(const KeyPath &path) const {
    const auto root = std::find_if(places_of_roots_.begin(), places_of_roots_.end(),
                                   [&](const auto &entry) { return entry.first == path.root; });
    std::string place = root->second;
    for (const std::string &name : path.names) (place += Separator) += Capitals_Of(name);
    return place;
}

Plan::Nodes::iterator Plan::Node_Of(const KeyPath &path) {
    std::string place = Place_Of(path);
    const auto known = nodes_.find(place);
    if (known != nodes_.end()) return known;
    End_If_Interrupted();
    const OpenKey key(path);
    const bool there = static_cast<bool>(key);
    Node node{path, there, there, false, there ? key.Class() : "", {}};
    return nodes_.emplace(std::move(place), std::move(node)).first;
}

Plan::Node &Plan::Made(const KeyPath &path) {
    Node &node = Node_Of(path)->second;
    if (node.now) return node;
    KeyPath above = path;
    for (bool missing = true; missing && !above.names.empty();) {
        above.names.pop_back();
        Node &parent = Node_Of(above)->second;
        missing = !parent.now;
        parent.now = true;
    }
    node.now = true;
    return node;
}

void Plan::Read_Values(Node &node) {
    if (std::exchange(node.values_read, true) || !node.before) return;
    const OpenKey key(node.path);
    if (!key) return;
    for (NamedValue &value : key.Values()) {
        const std::string capitals = Capitals_Of(value.name);
        node.values[capitals] = {std::move(value.name), value.value, value.value};
    }
}

void Plan::Read_All(const std::vector<KeyPath> &keys) {
    Progress progress("reading the registry", keys.size());
    for (const KeyPath &key : keys) {
        Read_Values(Node_Of(key)->second);
        progress.Step();
    }
}

Plan::Slot &Plan::Slot_Of(Node &node, const std::string &name) {
    Read_Values(node);
    Slot &slot = node.values[Capitals_Of(name)];
    if (slot.name.empty()) slot.name = name;
    return slot;
}

void Plan::Set_Value(const KeyPath &path, const std::string &name, Value value) {
    Slot_Of(Made(path), name).now = std::move(value);
}

bool Plan::Delete_Value(const KeyPath &path, const std::string &name) {
    Node &node = Node_Of(path)->second;
    return node.now && std::exchange(Slot_Of(node, name).now, std::nullopt).has_value();
}

bool Plan::Delete_Key(const KeyPath &path) {
    const std::string place = Place_Of(path);
    for (const auto &[root, root_place] : places_of_roots_) {
        if (root_place == place || root_place.starts_with(place + Separator))
            throw Failure(Exit_Unusable, path.Text() + ": the machine's own key, which cannot be deleted");
    }
    const auto top = Node_Of(path);
    if (!top->second.now) return false;
    if (top->second.before) Read_All(Keys_From(top->second.path));
    for (auto node = top; node != nodes_.end(); ++node) {
        if (node != top && !node->first.starts_with(place + Separator)) break;
        node->second.now = false;
        for (auto &[name, slot] : node->second.values) slot.now.reset();
    }
    return true;
}

void Plan::Do(std::vector<Section> sections, const std::string &file) {
    std::size_t steps = sections.size();
    for (const Section &section : sections) steps += section.items.size();
    Progress progress("comparing with the registry", steps);
    for (Section &section : sections) {
        progress.Step();
        if (section.deleted) {
            try {
                Delete_Key(section.key);
            } catch (const Failure &failure) {
                throw FaultInFile(file, section.line, failure.what());
            }
            continue;
        }
        Node &node = Made(section.key);
        for (Item &item : section.items) {
            Slot_Of(node, item.name).now = std::move(item.value);
            progress.Step();
        }
    }
}

void Plan::Add_Value_Changes(Node &node, bool deletions, std::vector<Change> &changes) {
    for (auto &[capitals, slot] : node.values) {
        if (slot.before == slot.now || slot.now.has_value() == deletions) continue;
        changes.push_back({node.path, false, slot.name, std::move(slot.before), std::move(slot.now)});
    }
}

std::vector<Change> Plan::Take_Changes() {
    std::vector<Change> changes;
    for (auto &[place, node] : nodes_) {
        if (node.now && !node.before) changes.push_back({node.path, true, "", {}, Value{}});
        Add_Value_Changes(node, false, changes);
    }
    for (auto entry = nodes_.rbegin(); entry != nodes_.rend(); ++entry) {
        Node &node = entry->second;
        Add_Value_Changes(node, true, changes);
        if (node.before && !node.now) changes.push_back({node.path, true, "", Value{0, node.class_name}, {}});
    }
    nodes_.clear();
    return changes;
}

} // namespace tools::reg
