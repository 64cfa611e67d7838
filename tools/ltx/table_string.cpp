#include <tools/ltx/table_string.h>

namespace tools::ltx {

namespace {

std::string Too_Long(const char *what, const std::string &field, std::size_t longest) {
    return std::string(what) + " of " + std::to_string(field.size()) + " characters; a table has room for " +
           std::to_string(longest);
}

} // namespace

std::string Limit_Passed(const TableString &string) {
    if (string.text.size() > Longest_Text) return Too_Long("text", string.text, Longest_Text);
    if (string.identifier.size() > Longest_Identifier)
        return Too_Long("identifier", string.identifier, Longest_Identifier);
    if (string.comments.size() > Longest_Comments)
        return Too_Long("comments", string.comments, Longest_Comments);
    if (string.identifier.find('\0') != std::string::npos) return "identifier with a zero byte";
    if (string.comments.find('\0') != std::string::npos) return "comments with a zero byte";
    return {};
}

} // namespace tools::ltx
