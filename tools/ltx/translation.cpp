#include <tools/ltx/string_line.h>
#include <tools/ltx/text_reader.h>
#include <tools/ltx/translation.h>

#include <algorithm>

namespace tools::ltx {

namespace {

constexpr std::string_view New = "#new", Changed = "#changed from", Source = "#source",
                           Gone = "#no longer there", Gone_Type = "#its type",
                           Gone_Comments = "#its comments", Is_Escaped = " (escaped)", Separator = ": ";

bool Can_Stand_As_It_Is(const std::string &text) {
    return !text.ends_with(' ') &&
           std::none_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
}

std::string Mark(std::string_view name, const std::string &text) {
    if (Can_Stand_As_It_Is(text)) return std::string(name).append(Separator).append(text);
    return std::string(name).append(Is_Escaped).append(Separator).append(Escaped(text));
}

/// What a mark of that name says; nothing when the line is none. An empty text may have lost its blank.
std::optional<std::string> Read_Mark(std::string_view line, std::string_view name) {
    if (!line.starts_with(name)) return std::nullopt;
    line.remove_prefix(name.size());
    const bool escaped = line.starts_with(Is_Escaped);
    if (escaped) line.remove_prefix(Is_Escaped.size());
    if (line == ":") return "";
    if (!line.starts_with(Separator)) return std::nullopt;
    line.remove_prefix(Separator.size());
    std::string text(line);
    if (escaped && !Unescape(line, text)) return std::nullopt;
    return text;
}

bool Is_New_Mark(std::string_view line) {
    return line.substr(0, line.find_last_not_of(' ') + 1) == New;
}

void Take_Comment(std::string_view line, TranslatedString &string) {
    auto changed = Read_Mark(line, Changed), source = Read_Mark(line, Source);
    if (Is_New_Mark(line))
        string.is_new = true;
    else if (changed)
        string.changed_from = std::move(changed);
    else if (source)
        string.source = std::move(source);
    else if (line != Escape_Mark)
        string.comments.emplace_back(line);
}

/// The comments of the first string down to the last empty line are the file's.
void Move_Head(Translation &translation) {
    std::vector<std::string> &comments =
        translation.strings.empty() ? translation.rest : translation.strings[0].comments;
    const auto end = std::find(comments.rbegin(), comments.rend(), "").base();
    translation.head.assign(comments.begin(), end);
    comments.erase(comments.begin(), end);
}

void Add_Lines(std::string &text, const std::vector<std::string> &lines) {
    for (const std::string &line : lines) (text += line) += '\n';
}

} // namespace

std::string Translation::Text() const {
    std::string text;
    Add_Lines(text, head);
    for (const TranslatedString &each : strings) {
        Add_Lines(text, each.comments);
        if (each.is_new) text.append(New) += '\n';
        if (each.changed_from) text += Mark(Changed, *each.changed_from) + '\n';
        if (each.source) text += Mark(Source, *each.source) + '\n';
        text += Lines_Of(each.string);
    }
    Add_Lines(text, rest);
    return text;
}

Translation Translation_Of(const StringsFile &file) {
    Translation translation;
    TranslatedString next;
    if (file.is_table) {
        for (const LocatedString &each : file.strings)
            translation.strings.push_back({each.string, {}, false, {}, {}});
        return translation;
    }
    TextReader reader(file.bytes);
    for (TextLine line; reader.Next(line);) {
        if (line.kind == TextLine::Passed_Over) Take_Comment(line.raw, next);
        if (line.kind != TextLine::String) continue;
        next.string = std::move(line.string);
        translation.strings.push_back(std::move(next));
        next = {};
    }
    translation.rest = std::move(next.comments);
    Move_Head(translation);
    return translation;
}

std::vector<std::string> Gone_Marks(const TableString &string) {
    std::vector<std::string> marks = {Mark(Gone, string.identifier + std::string(Separator) + string.text)};
    if (string.type != 0) marks.push_back(Mark(Gone_Type, std::to_string(string.type)));
    if (!string.comments.empty()) marks.push_back(Mark(Gone_Comments, string.comments));
    return marks;
}

} // namespace tools::ltx
