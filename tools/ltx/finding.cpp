#include <tools/failure.h>
#include <tools/json.h>
#include <tools/ltx/finding.h>
#include <tools/ltx/string_line.h>
#include <tools/output.h>
#include <tools/tables/machine_view.h>

namespace tools::ltx {

std::string Shown(const Finding &finding) {
    const std::string file = Shown_Name(finding.file), number = std::to_string(finding.number);
    const std::string text =
        finding.text + (finding.named_file.empty() ? "" : " " + Shown_Name(finding.named_file));
    if (!finding.in_table) return file + ":" + number + ": " + text;
    if (finding.number == Finding::Header) return file + ": " + text;
    const std::string name = finding.identifier.empty() ? "entry" : Escaped(finding.identifier);
    return file + ": " + name + " " + number + ": " + text;
}

Json Json_Of(const Finding &finding) {
    Json json = {{"file", Host_Text(finding.file)}};
    if (!finding.in_table)
        json["line"] = finding.number;
    else if (finding.number != Finding::Header)
        json["index"] = finding.number;
    if (!finding.identifier.empty()) json["identifier"] = Utf8_Of(finding.identifier);
    json["text"] = Utf8_Of(finding.text) +
                   (finding.named_file.empty() ? "" : " " + Host_Text(Shown_Name(finding.named_file)));
    return json;
}

} // namespace tools::ltx
