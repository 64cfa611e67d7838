#include <tools/machine_choice.h>
#include <tools/progress.h>
#include <tools/reg/open_key.h>
#include <tools/reg/reg_commands.h>
#include <tools/reg/value_form.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace tools::reg {

namespace {

struct Options {
    std::string path;
    std::optional<std::string> value;
    bool recursive = false, json = false;
};

/// What is to be told of a key.
struct Found {
    std::string path;
    std::vector<NamedValue> values;
    std::vector<std::string> subkeys;
};

std::optional<Found> Look_At(const KeyPath &path, const Options &options) {
    const OpenKey key(path);
    if (!key) return {};
    Found found{key.Path(), key.Values(), {}};
    if (!options.value) {
        found.subkeys = key.Subkeys();
        return found;
    }
    std::erase_if(found.values, [wanted = Capitals_Of(*options.value)](const NamedValue &value) {
        return Capitals_Of(value.name) != wanted;
    });
    return found.values.empty() ? std::nullopt : std::optional(std::move(found));
}

std::vector<Found> Look(const Options &options) {
    const KeyPath top = Stored_Path(Key_Path_Of(options.path));
    const std::vector<KeyPath> keys = options.recursive ? Keys_From(top) : std::vector{top};
    Progress progress("reading the registry", keys.size());
    std::vector<Found> all;
    for (const KeyPath &key : keys) {
        if (auto found = Look_At(key, options)) all.push_back(std::move(*found));
        progress.Step();
    }
    return all;
}

void Print_Data(const Form &form) {
    for (const std::string &text : form.data) Print_Line(text);
}

void Print_Table(const std::vector<NamedValue> &values) {
    std::vector<std::array<std::string, 3>> rows;
    std::size_t name_width = 0, type_width = 0;
    for (const NamedValue &value : values) {
        const Form form = Form_Of(value.value);
        rows.push_back({value.name.empty() ? "(default)" : Visible(value.name), form.type, Shown_Data(form)});
        name_width = std::max(name_width, std::min<std::size_t>(rows.back()[0].size(), 40));
        type_width = std::max(type_width, form.type.size());
    }
    for (auto &[name, type, data] : rows) {
        if (name.size() < name_width) name.resize(name_width, ' ');
        type.resize(type_width, ' ');
        Print_Line("    " + name + "  " + type + "  " + data);
    }
}

void Print_Found(const std::vector<Found> &all, bool with_subkeys) {
    bool first = true;
    for (const Found &found : all) {
        if (!std::exchange(first, false)) Print_Line("");
        Print_Line(Visible(found.path));
        Print_Table(found.values);
        for (const std::string &name : found.subkeys) {
            if (with_subkeys) Print_Line("    " + Visible(name) + '\\');
        }
    }
}

Json Json_Of(const Found &found) {
    Json json = {{"key", Utf8_Of(found.path)}, {"values", Json::array()}, {"subkeys", Json::array()}};
    for (const NamedValue &value : found.values) {
        const Form form = Form_Of(value.value);
        json["values"].push_back(
            {{"name", Utf8_Of(value.name)}, {"type", form.type}, {"data", Json_Data(form)}});
    }
    for (const std::string &name : found.subkeys) json["subkeys"].push_back(Utf8_Of(name));
    return json;
}

ExitCode Query(const Options &options) {
    Require_Machine();
    const std::vector<Found> all = Look(options);
    if (options.value && all.empty())
        throw Failure(Exit_Negative, options.path + ": no value '" + *options.value + "'");
    if (options.json) {
        Json json = Json::array();
        for (const Found &found : all) json.push_back(Json_Of(found));
        Print_Json(json);
    } else if (options.value && !options.recursive) {
        Print_Data(Form_Of(all[0].values[0].value));
    } else {
        Print_Found(all, !options.recursive);
    }
    return Exit_Success;
}

} // namespace

void Add_Query(CommandTree &tree, CLI::App *parent) {
    auto options = std::make_shared<Options>();
    CLI::App *query = tree.Add("query", "shows a key's values and subkeys", parent);
    query->add_option("PATH", options->path, "the key, 'HKLM\\Software' or the like")->required();
    query
        ->add_option("--value", options->value,
                     "only this value, '' for the default one; without --recursive its data alone: texts as "
                     "they are, numbers in decimal, bytes in hexadecimal")
        ->type_name("NAME");
    query->add_flag("--recursive", options->recursive, "all keys below it too");
    query->add_flag("--json", options->json, "a list of keys, each with its values and the names below it");
    tree.Does(query, [options] { return Query(*options); });
}

} // namespace tools::reg
