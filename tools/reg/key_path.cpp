#include <tools/failure.h>
#include <tools/reg/key_path.h>
#include <tools/reg/value.h>

#include <platform/letter_case.h>

#include <algorithm>

namespace tools::reg {

namespace {

std::string Joined(const std::vector<std::string> &names, std::string text) {
    for (const std::string &name : names) {
        if (!text.empty()) text += '\\';
        text += name;
    }
    return text;
}

const Root *Root_Named(const std::string &name) {
    const std::string capitals = Capitals_Of(name);
    const auto found = std::find_if(Roots().begin(), Roots().end(), [&](const Root &root) {
        return capitals == root.name || capitals == root.short_name;
    });
    return found == Roots().end() ? nullptr : &*found;
}

} // namespace

std::string Capitals_Of(std::string name) {
    CharUpperBuffA(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

const std::vector<Root> &Roots() {
    static const std::vector<Root> roots = {
        {"HKEY_CLASSES_ROOT", "HKCR", HKEY_CLASSES_ROOT},
        {"HKEY_CURRENT_CONFIG", "HKCC", HKEY_CURRENT_CONFIG},
        {"HKEY_CURRENT_USER", "HKCU", HKEY_CURRENT_USER},
        {"HKEY_LOCAL_MACHINE", "HKLM", HKEY_LOCAL_MACHINE},
        {"HKEY_USERS", "HKU", HKEY_USERS},
    };
    return roots;
}

std::string KeyPath::Text() const {
    return Joined(names, root->name);
}

std::string KeyPath::Below_Root() const {
    return Joined(names, "");
}

std::string Read_Key_Path(const std::string &text, KeyPath &path) {
    const std::size_t root_end = std::min(text.find('\\'), text.size());
    KeyPath read{Root_Named(text.substr(0, root_end)), {}};
    if (read.root == nullptr) return "'" + text.substr(0, root_end) + "' is no root of the registry";
    for (std::size_t start = root_end; start < text.size();) {
        const std::size_t end = std::min(text.find('\\', start), text.size());
        if (end - start > Longest_Key_Name) return "a key's name is longer than 255 characters";
        if (end > start) read.names.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    path = std::move(read);
    return "";
}

KeyPath Key_Path_Of(const std::string &argument) {
    KeyPath path;
    const std::string wrong = Read_Key_Path(argument, path);
    if (!wrong.empty()) throw Failure(Exit_Unusable, wrong);
    return path;
}

} // namespace tools::reg
