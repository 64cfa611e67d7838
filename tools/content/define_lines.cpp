#include <tools/content/define_lines.h>
#include <tools/content/passing_file.h>
#include <tools/failure.h>
#include <tools/files.h>
#include <tools/progress.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/iterator.h>
#include <kelmara/content/define_file.h>

#include <platform/errors.h>

#include <algorithm>
#include <new>
#include <set>
#include <utility>

namespace tools {

namespace {

constexpr std::string_view Define = "#define";
constexpr std::size_t Longest_Name = 255, Longest_Value = 63, Size_Of_Code = 5; // a quote and four characters

class DefineTable : public CHashTable {
  public:
    std::vector<ParsedDefine> Entries() {
        std::vector<ParsedDefine> entries;
        CIterator walk;
        for (void *each = walk.Iterate(&Entry_List); walk.More(); each = walk.Next()) {
            const auto *const entry = static_cast<HashTableEntry *>(each);
            entries.push_back({entry->Key, std::string(entry->Data, static_cast<std::size_t>(entry->Size))});
        }
        return entries;
    }
};

std::size_t Behind_Blanks(std::string_view text, std::size_t at) {
    return std::min(text.find_first_not_of(" \t", at), text.size());
}

/// Where the name ends that begins there: at a blank that is not between single quotes.
std::size_t End_Of_Name(std::string_view text, std::size_t at) {
    bool in_quotes = false;
    const std::size_t limit = std::min(text.size(), at + Longest_Name + 1);
    for (; at < limit && (in_quotes || (text[at] != ' ' && text[at] != '\t')); ++at)
        if (text[at] == '\'') in_quotes = !in_quotes;
    return at;
}

/// The remarks on the value that begins there.
void Look_At_Value(std::string_view text, std::size_t at, FoundDefine &found) {
    text = text.substr(at, Longest_Value + 2); // no more of it counts
    const std::size_t feed = text.find('\n');
    const std::size_t length = std::min(feed, text.size());
    const auto remark = [&](const char *what) { found.remarks.push_back(what); };
    if (length > Longest_Value + 1 || (length == Longest_Value + 1 && feed == text.npos))
        return remark("the value is cut to 63 bytes");
    const bool loses_one = feed != text.npos && length > 0;
    if (loses_one && text[feed - 1] != '\r')
        remark("the line ends in a bare line feed: the value loses its last character");
    if (text.substr(0, length).find(Define) != text.npos)
        remark("the value holds a #define, which counts too");
    if (length - (loses_one ? 1 : 0) < Size_Of_Code)
        remark("no four-character code: & tokens of this name fail");
}

FoundDefine Look_At_Define(std::string_view text, std::size_t at, unsigned long line,
                           std::set<std::string> &names) {
    FoundDefine found;
    const std::size_t start = Behind_Blanks(text, at), end = End_Of_Name(text, start);
    const std::string_view name = text.substr(start, end - start);
    found.line = line;
    found.last_line = line + Line_Of(name, name.size()) - 1;
    found.is_taken = name.size() <= Longest_Name;
    if (!found.is_taken) {
        found.remarks.push_back("left out: a name has at most 255 characters");
        return found;
    }
    if (name.find_first_of("\r\n") != name.npos)
        found.remarks.push_back("the name goes on behind the line's end: no blank stands behind it");
    if (name.empty()) found.remarks.push_back("there is no name");
    if (!names.insert(std::string(name)).second)
        found.remarks.push_back("hidden by the one of the same name above");
    Look_At_Value(text, Behind_Blanks(text, end), found);
    return found;
}

} // namespace

std::vector<ParsedDefine> Parse_Defines(std::string_view text) {
    const PassingFile file(text);
    try {
        DefineTable table;
        const long result = Tokenize_Define_File(Machine_Path(file.Path()).c_str(), &table);
        if (result == E_OUTOFMEMORY) throw std::bad_alloc();
        if (result != 0)
            throw Failure(Exit_Unusable, "the library cannot read the defines: " + std::to_string(result));
        return table.Entries();
    } catch (int) {
        throw Failure(Exit_Unusable, "not enough memory"); // for the table's list
    }
}

std::size_t End_Of_Defines(std::string_view text) {
    return std::min(text.find('\0'), text.size());
}

std::vector<FoundDefine> Find_Defines(std::string_view text) {
    text = text.substr(0, End_Of_Defines(text));
    std::vector<FoundDefine> all;
    std::set<std::string> names;
    TextLines lines(text);
    std::string_view line;
    Progress progress("looking for defines", text.size());
    std::size_t looked_to = 0;
    for (std::size_t at = text.find(Define); at != text.npos; at = text.find(Define, at)) {
        at += Define.size();
        progress.Step(at - std::exchange(looked_to, at));
        while (lines.Behind() < at && lines.Next(line)) {
        }
        all.push_back(Look_At_Define(text, at, lines.Number(), names));
    }
    return all;
}

std::string Why_No_Define(std::string_view text, unsigned long number, const FoundDefine *before,
                          bool is_behind_end) {
    if (is_behind_end) return "not read: a zero byte in front of it ends the file";
    if (before != nullptr && number <= before->last_line)
        return "part of the name that begins on line " + std::to_string(before->line);
    if (text.find_first_not_of(" \t") == text.npos) return "empty";
    return "no \"#define\"";
}

} // namespace tools
