#include <tools/ltx/checks.h>
#include <tools/ltx/format_places.h>
#include <tools/ltx/string_line.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace tools::ltx {

namespace {

using Index = std::unordered_map<std::string_view, const LocatedString *>;

constexpr std::size_t Longest_Exported = 1023; // of a text, its control characters as two each

Index Index_Of(const StringsFile &file) {
    Index index;
    for (const LocatedString &each : file.strings) index.emplace(each.string.identifier, &each);
    return index;
}

Finding At(const StringsFile &file, const LocatedString &string, const std::string &text) {
    return {file.name, file.is_table, string.number, string.string.identifier, text};
}

void Find_Duplicates(const StringsFile &file, std::vector<Finding> &findings) {
    const Index first = Index_Of(file);
    for (const LocatedString &each : file.strings) {
        const LocatedString &earlier = *first.at(each.string.identifier);
        if (&earlier == &each || each.string.identifier.empty()) continue;
        findings.push_back(At(file, each,
                              Escaped(each.string.identifier) + " is there already, as " +
                                  (file.is_table ? "entry " : "line ") + std::to_string(earlier.number) +
                                  ", which is the one that counts"));
    }
}

std::size_t Exported_Length(const std::string &text) {
    const auto is_control = [](char c) { return c == '\r' || c == '\n' || c == '\t'; };
    return text.size() + static_cast<std::size_t>(std::count_if(text.begin(), text.end(), is_control));
}

void Find_Cut(const StringsFile &file, std::vector<Finding> &findings) {
    for (const LocatedString &each : file.strings) {
        const auto note = [&](bool reached, const char *what, std::size_t longest, const char *limit) {
            if (!reached) return;
            findings.push_back(At(file, each,
                                  std::string(what) + " may be cut: " + std::to_string(longest) +
                                      " characters are the most that " + limit));
        };
        const TableString &string = each.string;
        note(string.identifier.size() == Longest_Identifier, "identifier", Longest_Identifier,
             "a table holds");
        note(string.comments.size() == Longest_Comments, "comments", Longest_Comments, "a table holds");
        note(string.text.size() == Longest_Text, "text", Longest_Text, "a table holds");
        note(Exported_Length(string.text) == Longest_Exported, "text", Longest_Exported,
             "CStringTable exports");
    }
}

} // namespace

std::vector<Finding> Check(const StringsFile &file) {
    std::vector<Finding> findings = file.faults;
    Find_Duplicates(file, findings);
    Find_Cut(file, findings);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding &a, const Finding &b) { return a.number < b.number; });
    return findings;
}

std::vector<Finding> Check_Against(const StringsFile &file, const StringsFile &source) {
    std::vector<Finding> findings;
    const Index in_source = Index_Of(source), in_file = Index_Of(file);
    for (const LocatedString &each : file.strings) {
        if (each.string.identifier.empty()) continue;
        const auto model = in_source.find(each.string.identifier);
        const std::string fault = model == in_source.end()
                                      ? Escaped(each.string.identifier) + " is not in the source"
                                      : Difference_In_Places(model->second->string.text, each.string.text);
        if (!fault.empty()) findings.push_back(At(file, each, fault));
    }
    for (const LocatedString &each : source.strings) {
        const std::string &identifier = each.string.identifier;
        const bool counts = !identifier.empty() && in_source.at(identifier) == &each;
        if (!counts || in_file.contains(identifier)) continue;
        findings.push_back(At(source, each, Escaped(identifier) + " is missing in"));
        findings.back().named_file = file.name;
    }
    return findings;
}

} // namespace tools::ltx
