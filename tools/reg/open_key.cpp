#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/progress.h>
#include <tools/reg/open_key.h>

#include <platform/errors.h>
#include <platform/machine.h>

#include <algorithm>
#include <utility>

namespace tools::reg {

namespace {

constexpr int Attempts = 1000;

struct KnownCode {
    LONG code;
    const char *text;
};
constexpr KnownCode Known_Codes[] = {
    {ERROR_FILE_NOT_FOUND, "no such key"},
    {ERROR_ACCESS_DENIED, "may not be changed"},
    {ERROR_NOT_ENOUGH_MEMORY, "not enough memory"},
    {ERROR_DISK_FULL, "the disk, or the registry, is full"},
    {ERROR_BADDB, "the machine's registry is damaged; it is left as it is"},
    {ERROR_KEY_DELETED, "was deleted meanwhile"},
};

// Told apart by the time of the last change.
bool Same(const FILETIME &left, const FILETIME &right) {
    return left.dwLowDateTime == right.dwLowDateTime && left.dwHighDateTime == right.dwHighDateTime;
}

LONG Last_Write(HKEY key, FILETIME *time) {
    return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, time);
}

// What `list` gives while nobody changes the key. Empty for a key that was deleted meanwhile.
template <class List>
auto At_One_Moment(const OpenKey &key, List list) {
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        End_If_Interrupted();
        FILETIME before = {}, after = {};
        LONG code = Last_Write(key.Get(), &before);
        decltype(list(code)) all;
        if (code == ERROR_SUCCESS) all = list(code);
        if (code == ERROR_NO_MORE_ITEMS) code = Last_Write(key.Get(), &after);
        if (code == ERROR_KEY_DELETED) return decltype(all)();
        if (code != ERROR_SUCCESS) Fail_On_Key(key.Path(), code);
        if (Same(before, after)) return all;
    }
    throw Failure(Exit_Unusable, key.Path() + ": other programs change it all the time");
}

LONG Read_Value(HKEY key, DWORD index, std::string &name, std::string &data, DWORD &type, DWORD &size) {
    for (;;) {
        DWORD name_size = static_cast<DWORD>(name.size());
        size = static_cast<DWORD>(data.size());
        const LONG code = RegEnumValueA(key, index, name.data(), &name_size, nullptr, &type,
                                        reinterpret_cast<BYTE *>(data.data()), &size);
        if (code != ERROR_MORE_DATA || size <= data.size()) return code;
        data.resize(size);
    }
}

template <class Each, class NameOf>
void Sort_By_Name(std::vector<Each> &all, NameOf name_of) {
    std::vector<std::pair<std::string, Each>> sorted;
    sorted.reserve(all.size());
    for (Each &each : all) {
        std::string capitals = Capitals_Of(name_of(each));
        sorted.emplace_back(std::move(capitals), std::move(each));
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto &left, const auto &right) { return left.first < right.first; });
    for (std::size_t at = 0; at < sorted.size(); ++at) all[at] = std::move(sorted[at].second);
}

} // namespace

void Fail_On_Key(const std::string &path, LONG code) {
    const auto known = std::find_if(std::begin(Known_Codes), std::end(Known_Codes),
                                    [&](const KnownCode &entry) { return entry.code == code; });
    throw Failure(Exit_Unusable,
                  path + ": " +
                      (known != std::end(Known_Codes) ? known->text
                                                      : "the registry says error " + std::to_string(code)));
}

OpenKey::OpenKey(const KeyPath &path) : path_(path.Text()) {
    const LONG code = RegOpenKeyExA(path.root->key, path.Below_Root().c_str(), 0, MAXIMUM_ALLOWED, &key_);
    if (code != ERROR_SUCCESS && code != ERROR_FILE_NOT_FOUND) Fail_On_Key(path_, code);
}

OpenKey::~OpenKey() {
    if (key_ != nullptr) RegCloseKey(key_);
}

OpenKey::OpenKey(OpenKey &&other) noexcept
    : key_(std::exchange(other.key_, nullptr)), path_(std::move(other.path_)) {}

OpenKey &OpenKey::operator=(OpenKey &&other) noexcept {
    std::swap(key_, other.key_);
    std::swap(path_, other.path_);
    return *this;
}

std::string OpenKey::Class() const {
    char text[Longest_Key_Name + 1] = "";
    DWORD size = sizeof text;
    RegQueryInfoKeyA(key_, text, &size, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr);
    return text;
}

std::vector<NamedValue> OpenKey::Values() const {
    std::string name(Longest_Value_Name + 1, '\0'), data(4096, '\0');
    auto values = At_One_Moment(*this, [&](LONG &code) {
        std::vector<NamedValue> all;
        DWORD type = 0, size = 0;
        for (DWORD index = 0; (code = Read_Value(key_, index, name, data, type, size)) == 0; ++index)
            all.push_back({name.c_str(), {type, data.substr(0, size)}});
        return all;
    });
    Sort_By_Name(values, [](const NamedValue &value) { return value.name; });
    return values;
}

std::vector<std::string> OpenKey::Subkeys() const {
    auto names = At_One_Moment(*this, [&](LONG &code) {
        std::vector<std::string> all;
        for (DWORD index = 0;; ++index) {
            char name[Longest_Key_Name + 1];
            DWORD size = sizeof name;
            code = RegEnumKeyExA(key_, index, name, &size, nullptr, nullptr, nullptr, nullptr);
            if (code != ERROR_SUCCESS) return all;
            all.emplace_back(name, size);
        }
    });
    Sort_By_Name(names, [](const std::string &name) { return name; });
    return names;
}

std::string Whole_Path(HKEY key, const std::string &path) {
    std::string whole(260, '\0');
    DWORD size = static_cast<DWORD>(whole.size());
    LONG code = ERROR_MORE_DATA;
    while ((code = Registry_Key_Path(key, whole.data(), &size)) == ERROR_MORE_DATA) whole.resize(size);
    if (code != ERROR_SUCCESS) Fail_On_Key(path, code);
    whole.resize(size);
    return whole;
}

KeyPath Stored_Path(const KeyPath &path) {
    const OpenKey key(path);
    if (!key) throw Failure(Exit_Negative, path.Text() + ": no such key");
    const std::string root = Whole_Path(path.root->key, path.root->name);
    KeyPath stored;
    Read_Key_Path(path.root->name + Whole_Path(key.Get(), key.Path()).substr(root.size()), stored);
    return stored;
}

std::vector<KeyPath> Keys_From(const KeyPath &top) {
    std::vector<KeyPath> keys, waiting = {top};
    for (Progress progress("looking for keys", 0); !waiting.empty(); progress.Step()) {
        KeyPath path = std::move(waiting.back());
        waiting.pop_back();
        const OpenKey key(path);
        if (!key) continue;
        std::vector<std::string> names = key.Subkeys();
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            waiting.push_back(path);
            waiting.back().names.push_back(std::move(*name));
        }
        keys.push_back(std::move(path));
    }
    return keys;
}

} // namespace tools::reg
