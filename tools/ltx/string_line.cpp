#include <tools/ltx/string_line.h>

#include <algorithm>
#include <charconv>

namespace tools::ltx {

namespace {

constexpr std::string_view Controls = "\r\n\t", Letters = "rnt";
constexpr std::string_view Byte_Order_Mark = "\xEF\xBB\xBF";

/// Up to four fields; `count` is 5 when there are more.
struct Fields {
    std::string_view of[4];
    int count = 0;
};

/// Three fields by any number of tabs, and all the rest. A third one that ends the line has no comments
/// behind it, or lost their blank to an editor; but not where tabs stand together, one of which may be for a
/// field that is empty.
Fields Split_Plain(std::string_view line) {
    const bool one_tab_each = !line.starts_with('\t') && line.find("\t\t") == std::string_view::npos;
    Fields fields;
    while (fields.count < 3) {
        const std::size_t start = line.find_first_not_of('\t');
        if (start == std::string_view::npos) return fields;
        line.remove_prefix(start);
        const std::size_t end = std::min(line.find('\t'), line.size());
        fields.of[fields.count++] = line.substr(0, end);
        line.remove_prefix(end);
    }
    line.remove_prefix(std::min(line.find_first_not_of('\t'), line.size()));
    if (!line.empty() || one_tab_each) fields.of[fields.count++] = line;
    return fields;
}

Fields Split_Escaped(std::string_view line) {
    Fields fields;
    for (std::size_t end = 0; end != std::string_view::npos && fields.count < 5; ++fields.count) {
        end = line.find('\t');
        if (fields.count < 4) fields.of[fields.count] = line.substr(0, end);
        if (end != std::string_view::npos) line.remove_prefix(end + 1);
    }
    return fields;
}

/// What is wrong with it; empty when nothing is.
std::string Parse_Type(std::string_view field, long &type) {
    const std::string shown = "type \"" + std::string(field) + "\"";
    field.remove_prefix(std::min(field.find_first_not_of(' '), field.size()));
    field = field.substr(0, field.find_last_not_of(' ') + 1);
    if (field.starts_with('+') && !field.starts_with("+-")) field.remove_prefix(1);
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), type);
    if (error == std::errc::result_out_of_range) return shown + " is beyond 32 bits";
    if (error != std::errc() || end != field.data() + field.size()) return shown + " is no number";
    return {};
}

std::string Unusable_Byte(std::string_view line) {
    if (line.find('\0') != std::string_view::npos) return "a zero byte";
    if (line.find('\r') != std::string_view::npos) return "a carriage return inside the line";
    if (line.find('\n') != std::string_view::npos) return "a line feed inside the line";
    return {};
}

std::string Comments_Of(std::string_view field) {
    std::string comments;
    if (field == " ") return comments;
    for (std::size_t at = 0; at < field.size(); ++at) {
        const std::size_t letter =
            field[at] == '\\' && at + 1 < field.size() ? Letters.find(field[at + 1]) : std::string_view::npos;
        if (letter != std::string_view::npos) ++at;
        comments += letter != std::string_view::npos ? Controls[letter] : field[at];
    }
    return comments;
}

std::string Comments_Field(const std::string &comments) {
    if (comments.empty()) return " ";
    std::string field;
    for (const char c : comments) {
        const std::size_t control = Controls.find(c);
        if (control != std::string_view::npos) field += '\\';
        field += control != std::string_view::npos ? Letters[control] : c;
    }
    return field;
}

std::string Plain_Line(const TableString &string) {
    return string.text + '\t' + string.identifier + '\t' + std::to_string(string.type) + '\t' +
           Comments_Field(string.comments);
}

std::string Escaped_Line(const TableString &string) {
    return Escaped(string.text) + '\t' + Escaped(string.identifier) + '\t' + std::to_string(string.type) +
           '\t' + Escaped(string.comments);
}

bool Read_Hex(std::string_view digits, unsigned &byte) {
    const char *const end = digits.data() + digits.size();
    const auto [behind, error] = std::from_chars(digits.data(), end, byte, 16);
    return digits.size() == 2 && error == std::errc() && behind == end;
}

/// Takes one off the front, to the end of `text`.
bool Take_Sequence(std::string_view &escaped, std::string &text) {
    const char kind = escaped.size() > 1 ? escaped[1] : '\0';
    const std::size_t letter = Letters.find(kind);
    unsigned byte = 0;
    if (letter != std::string_view::npos)
        text += Controls[letter];
    else if (kind == '\\')
        text += '\\';
    else if (kind == 'x' && Read_Hex(escaped.substr(2, 2), byte))
        text += static_cast<char>(byte);
    else
        return false;
    escaped.remove_prefix(kind == 'x' ? 4 : 2);
    return true;
}

/// A first line may begin a file, so it must not look like the mark of another encoding.
bool Carries(const std::string &line, const TableString &string) {
    TableString back;
    return !line.starts_with('#') && !line.starts_with(Byte_Order_Mark) && Parse_Plain(line, back).empty() &&
           back == string;
}

} // namespace

std::string Escaped(std::string_view text) {
    constexpr char Digits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const std::size_t control = Controls.find(c);
        if (control != std::string_view::npos)
            escaped.append({'\\', Letters[control]});
        else if (c == '\\')
            escaped += "\\\\";
        else if (byte < ' ' || byte == 0x7F)
            escaped.append("\\x").append({Digits[byte >> 4], Digits[byte & 15]});
        else
            escaped += c;
    }
    if (escaped.ends_with(' ')) escaped.replace(escaped.size() - 1, 1, "\\x20"); // editors take blanks away
    return escaped;
}

bool Unescape(std::string_view escaped, std::string &text) {
    text.clear();
    while (!escaped.empty()) {
        const std::size_t plain = std::min(escaped.find('\\'), escaped.size());
        text += escaped.substr(0, plain);
        escaped.remove_prefix(plain);
        if (!escaped.empty() && !Take_Sequence(escaped, text)) return false;
    }
    return true;
}

std::string Lines_Of(const TableString &string) {
    const std::string plain = Plain_Line(string);
    if (Carries(plain, string)) return plain + '\n';
    return std::string(Escape_Mark) + '\n' + Escaped_Line(string) + '\n';
}

std::string Parse_Plain(std::string_view line, TableString &string) {
    const std::string unusable = Unusable_Byte(line);
    if (!unusable.empty()) return unusable;
    const Fields fields = Split_Plain(line);
    if (fields.count < 4) return "not the four fields text, identifier, type and comments, with tabs between";
    TableString parsed = {std::string(fields.of[0]), std::string(fields.of[1]), Comments_Of(fields.of[3]), 0};
    std::string fault = Parse_Type(fields.of[2], parsed.type);
    if (fault.empty()) fault = Limit_Passed(parsed);
    if (fault.empty()) string = std::move(parsed);
    return fault;
}

std::string Parse_Escaped(std::string_view line, TableString &string) {
    const std::string unusable = Unusable_Byte(line);
    if (!unusable.empty()) return unusable;
    const Fields fields = Split_Escaped(line);
    if (fields.count != 4) return "not four fields with one tab between them, below \"#escaped\"";
    TableString parsed;
    if (!Unescape(fields.of[0], parsed.text) || !Unescape(fields.of[1], parsed.identifier) ||
        !Unescape(fields.of[3], parsed.comments))
        return R"(a backslash with none of \ r n t x00 to xFF behind it, below "#escaped")";
    std::string fault = Parse_Type(fields.of[2], parsed.type);
    if (fault.empty()) fault = Limit_Passed(parsed);
    if (fault.empty()) string = std::move(parsed);
    return fault;
}

bool Looks_Like_String(std::string_view line) {
    const Fields fields = Split_Plain(line);
    long type;
    return fields.count == 4 && Parse_Type(fields.of[2], type).empty();
}

} // namespace tools::ltx
