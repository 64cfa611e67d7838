#include <tools/json.h>
#include <tools/output.h>
#include <tools/tables/columns.h>
#include <tools/tables/machine_view.h>
#include <tools/tables/shared_images.h>
#include <tools/tables/views.h>

#include <kelmara/shared_state/atom_table.h>

#include <algorithm>
#include <cstdio>

namespace tools {

namespace {

constexpr std::string_view Lock_Ending = "-MUTEX";
constexpr std::size_t Most_Bytes_Shown = 24;

struct Table {
    std::string name;
    std::vector<unsigned long> processes;
};

/// The names that programs which have the block open have its lock open under.
std::vector<Table> Tables_Among(const std::vector<SharedBlockInUse> &blocks) {
    std::vector<Table> tables;
    const auto is_atoms = [](const SharedBlockInUse &each) {
        return each.block.kind == MACHINE_BLOCK_MAPPING && each.block.name == std::string(Atom_Block_Name);
    };
    const auto atoms = std::find_if(blocks.begin(), blocks.end(), is_atoms);
    if (atoms == blocks.end()) return tables;
    for (const SharedBlockInUse &each : blocks) {
        const std::string name = each.block.name;
        if (each.block.kind != MACHINE_BLOCK_MUTEX || !name.ends_with(Lock_Ending)) continue;
        Table table = {name.substr(0, name.size() - Lock_Ending.size()), {}};
        std::set_intersection(each.processes.begin(), each.processes.end(), atoms->processes.begin(),
                              atoms->processes.end(), std::back_inserter(table.processes));
        if (!table.processes.empty()) tables.push_back(std::move(table));
    }
    return tables;
}

std::string Hex_Of(const std::string &bytes, const char *between) {
    std::string hex;
    for (const char c : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        hex += (hex.empty() ? "" : between) + std::string(digits);
    }
    return hex;
}

bool Is_Text(const std::string &data) {
    return std::all_of(data.begin(), data.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= ' ' && byte != 0x7F;
    });
}

std::string Data_Shown(const std::string &data) {
    if (data.empty()) return "";
    if (Is_Text(data)) return "\"" + data + "\"";
    const bool cut = data.size() > Most_Bytes_Shown;
    return Hex_Of(data.substr(0, Most_Bytes_Shown), " ") + (cut ? " ..." : "");
}

Json Json_Of(const Atom &atom) {
    Json json = {{"slot", atom.slot}, {"group", atom.group}, {"id", atom.id}, {"bytes", atom.data.size()}};
    json["data"] = Hex_Of(atom.data, "");
    json["text"] = Is_Text(atom.data) ? Json(Utf8_Of(atom.data)) : Json();
    return json;
}

std::string Text_Of(const AtomImage &image) {
    if (image.atoms.empty()) return "";
    Columns columns({">slot", ">group", ">id", ">bytes", "data"});
    for (const Atom &atom : image.atoms) {
        columns.Add({std::to_string(atom.slot), Code_Text(atom.group), Code_Text(atom.id),
                     std::to_string(atom.data.size()), Data_Shown(atom.data)});
    }
    return columns.Text();
}

void Add_Tables_To(View &view, const std::vector<Table> &tables, std::size_t atoms) {
    for (const Table &table : tables) {
        view.text += "table \"" + Shown(table.name) + "\", " + std::to_string(atoms) + " of " +
                     std::to_string(Atom_Capacity) + " atoms, open in " +
                     Shown(Programs_Of(table.processes)) + "\n";
        view.json["tables"].push_back({{"name", Utf8_Of(table.name)}, {"processes", table.processes}});
    }
}

} // namespace

View Look_At_Atoms(const std::string &name) {
    View view;
    view.json = {{"tables", Json::array()}, {"atoms", Json::array()}, {"steady", true}};
    std::vector<Table> tables = Tables_Among(Shared_Blocks());
    std::erase_if(tables, [&](const Table &table) { return !name.empty() && table.name != name; });
    const auto seen = See_Mapping(Atom_Block_Name, Atom_Block_Size, Is_In_Change);
    if (tables.empty() || !seen) {
        if (!name.empty()) view.missing = name + ": no program has a table of this name open";
        view.text = "no program has an atom table open\n";
        return view;
    }
    const AtomImage image = Read_Atoms(seen->bytes);
    Add_Tables_To(view, tables, image.atoms.size());
    view.text += Text_Of(image);
    view.json["steady"] = seen->is_steady;
    if (!seen->is_steady) view.text += "a change is under way: this may be half of it\n";
    for (const Atom &atom : image.atoms) view.json["atoms"].push_back(Json_Of(atom));
    return view;
}

} // namespace tools
