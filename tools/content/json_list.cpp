#include <tools/content/json_list.h>
#include <tools/output.h>

namespace tools {

void JsonList::Add_Written(const std::string &element) {
    Print((is_empty_ ? "\n" : ",\n") + std::string(indent_, ' ') + element);
    is_empty_ = false;
}

void JsonList::Close() {
    Print(is_empty_ ? "]" : "\n" + std::string(indent_ - 2, ' ') + "]");
}

} // namespace tools
