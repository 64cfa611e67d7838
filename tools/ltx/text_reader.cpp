#include <tools/ltx/string_line.h>
#include <tools/ltx/text_reader.h>

#include <algorithm>

namespace tools::ltx {

std::string_view TextReader::Cut_Line() {
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

bool TextReader::Next(TextLine &line) {
    if (rest_.empty() && !escaped_) return false;
    if (rest_.empty()) {
        escaped_ = false;
        line = {TextLine::Faulty, number_, {}, {}, "no line behind \"#escaped\""};
        return true;
    }
    line.number = ++number_;
    line.raw = Cut_Line();
    Understand(line);
    return true;
}

void TextReader::Understand(TextLine &line) {
    const bool remark = !escaped_ && (line.raw.empty() || line.raw[0] == '#');
    if (remark) {
        escaped_ = line.raw == Escape_Mark;
        const bool both = Looks_Like_String(line.raw);
        line.kind = both ? TextLine::Faulty : TextLine::Passed_Over;
        line.fault = both ? "begins with '#', as a comment does, but is a whole string: "
                            "put a line \"#escaped\" above it, or take out its tabs"
                          : "";
        return;
    }
    line.fault = escaped_ ? Parse_Escaped(line.raw, line.string) : Parse_Plain(line.raw, line.string);
    line.kind = line.fault.empty() ? TextLine::String : TextLine::Faulty;
    escaped_ = false;
}

} // namespace tools::ltx
