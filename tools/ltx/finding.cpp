#include <tools/ltx/finding.h>
#include <tools/ltx/string_line.h>

namespace tools::ltx {

std::string Shown(const Finding &finding) {
    const std::string number = std::to_string(finding.number);
    if (!finding.in_table) return finding.file + ":" + number + ": " + finding.text;
    if (finding.number == Finding::Header) return finding.file + ": " + finding.text;
    const std::string name = finding.identifier.empty() ? "entry" : Escaped(finding.identifier);
    return finding.file + ": " + name + " " + number + ": " + finding.text;
}

Json Json_Of(const Finding &finding) {
    Json json = {{"file", finding.file}};
    if (!finding.in_table)
        json["line"] = finding.number;
    else if (finding.number != Finding::Header)
        json["index"] = finding.number;
    if (!finding.identifier.empty()) json["identifier"] = Utf8_Of(finding.identifier);
    json["text"] = Utf8_Of(finding.text);
    return json;
}

} // namespace tools::ltx
