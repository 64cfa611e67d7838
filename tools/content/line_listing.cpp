#include <tools/content/line_listing.h>
#include <tools/content/text_lines.h>
#include <tools/output.h>

namespace tools {

LineListing::LineListing(unsigned long lines) : digits_(std::to_string(lines).size()) {}

void LineListing::Tell(unsigned long line, const std::string &text) const {
    Print_Line(Number_Column(line, digits_) + ' ' + text);
}

void LineListing::Tell_Remarks(unsigned long line, const std::vector<std::string> &remarks) const {
    for (const std::string &remark : remarks) Tell(line, "    (" + remark + ")");
}

std::string Counted(std::size_t count, const std::string &what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace tools
