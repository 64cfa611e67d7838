#include <reference_suite/installer/string_tables.h>

#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct InstalledTable {
    const char *texts;
    const char *installed;
};

constexpr InstalledTable Tables[] = {
    {"english.txt", "english.ltx"},
    {"german.txt", "german.ltx"},
    {"english.txt", "otherStrings.ltx"},
    {"english.txt", "confPlugins.ltx"},
};

// UTF-8 to the machine's code page, which has U+00A0 to U+00FF at their own numbers. False for anything else
// beyond ASCII.
bool To_Code_Page(std::string &text) {
    std::string converted;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x80) {
            converted += text[at];
            continue;
        }
        const unsigned next = at + 1 < text.size() ? static_cast<unsigned char>(text[++at]) : 0;
        if ((byte != 0xC2 && byte != 0xC3) || (next & 0xC0) != 0x80) return false;
        const unsigned character = (byte & 3u) << 6 | (next & 0x3Fu);
        if (character < 0xA0) return false;
        converted += static_cast<char>(character);
    }
    text = converted;
    return true;
}

std::string Read_Texts(CStringTable &table, const std::string &path) {
    std::ifstream texts(path, std::ios::binary);
    if (!texts) return path + " cannot be read";
    int number = 0;
    for (std::string line; std::getline(texts, line);) {
        ++number;
        if (To_Code_Page(line) && table.Import_String(line.c_str()) >= 0) continue;
        return path + ", line " + std::to_string(number) + ", is no string of a table";
    }
    return {};
}

// Written aside and renamed over, so that no program sees half of one. z: is the host's own disk.
bool Save(CStringTable &table, const std::string &path) {
    const std::string aside = path + ".new" + std::to_string(getpid());
    CKMFile file;
    const bool written = file.Open(("z:" + aside).c_str(), true, true) == 0 &&
                         table.Save_Changes(&file) == 0 && file.GetLength() > 0; // it has reached the disk
    file.Close();
    std::error_code error, ignored;
    if (written) fs::rename(aside, path, error);
    if (written && !error) return true;
    fs::remove(aside, ignored);
    return false;
}

} // namespace

std::string Make_String_Tables(const std::string &text_folder, const std::string &localization_folder) {
    for (const InstalledTable &made : Tables) {
        CStringTable table(true);
        if (table.New_Table() != 0) return "there is no memory for a string table";
        std::string problem = Read_Texts(table, text_folder + "/" + made.texts);
        if (!problem.empty()) return problem;
        const std::string path = localization_folder + "/" + made.installed;
        if (!Save(table, path)) return path + " cannot be written";
    }
    return {};
}
