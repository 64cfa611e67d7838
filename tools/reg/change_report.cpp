#include <tools/reg/change.h>
#include <tools/reg/text_writer.h>
#include <tools/reg/value_form.h>

namespace tools::reg {

namespace {

constexpr std::size_t Longest_Shown = 100;

struct Counts {
    std::size_t created = 0, changed = 0, deleted = 0;
};

const char *Kind_Of(const Change &change) {
    return !change.before ? "created" : !change.now ? "deleted" : "changed";
}

Counts Count(const std::vector<Change> &changes, bool of_keys) {
    Counts counts;
    for (const Change &change : changes) {
        if (change.of_key != of_keys) continue;
        ++(!change.before ? counts.created : !change.now ? counts.deleted : counts.changed);
    }
    return counts;
}

std::string Shown(const Value &value) {
    const std::string data = Written_Data(value);
    if (data.size() <= Longest_Shown) return Visible(data);
    return Visible(data.substr(0, Longest_Shown)) + "... (" + std::to_string(value.data.size()) + " bytes)";
}

std::string Line_Of(const Change &change) {
    std::string line = std::string(Kind_Of(change)) + "  " + Visible(change.key.Text());
    if (change.of_key) return line;
    line += "  " + Visible(Written_Name(change.name)) + '=';
    if (change.before) line += Shown(*change.before);
    if (change.before && change.now) line += " -> ";
    return change.now ? line + Shown(*change.now) : line;
}

Json Json_Value(const std::optional<Value> &value) {
    if (!value) return nullptr;
    const Form form = Form_Of(*value);
    return {{"type", form.type}, {"data", Json_Data(form)}};
}

Json Json_Change(const Change &change) {
    Json json = {{"change", Kind_Of(change)}, {"key", Utf8_Of(change.key.Text())}};
    if (change.of_key) return json;
    json["value"] = Utf8_Of(change.name);
    json["before"] = Json_Value(change.before);
    json["now"] = Json_Value(change.now);
    return json;
}

} // namespace

void Print_Changes(const std::vector<Change> &changes, bool each) {
    for (const Change &change : changes) {
        if (each) Print_Line(Line_Of(change));
    }
    const Counts keys = Count(changes, true), values = Count(changes, false);
    Print_Line("keys: " + std::to_string(keys.created) + " created, " + std::to_string(keys.deleted) +
               " deleted; values: " + std::to_string(values.created) + " created, " +
               std::to_string(values.changed) + " changed, " + std::to_string(values.deleted) + " deleted");
}

void Print_Changes_As_Json(const std::vector<Change> &changes, bool each) {
    const Counts keys = Count(changes, true), values = Count(changes, false);
    Json json;
    json["keys"] = {{"created", keys.created}, {"deleted", keys.deleted}};
    json["values"] = {{"created", values.created}, {"changed", values.changed}, {"deleted", values.deleted}};
    if (each) {
        json["changes"] = Json::array();
        for (const Change &change : changes) json["changes"].push_back(Json_Change(change));
    }
    Print_Json(json);
}

} // namespace tools::reg
