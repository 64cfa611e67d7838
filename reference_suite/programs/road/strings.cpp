#include <reference_suite/programs/road/strings.h>

#include <reference_suite/programs/road/narrator.h>

#include <kelmara/kelmara.h>

#include <cstring>
#include <string>

namespace {

constexpr int Localization_Folder = 10;

void Load(CStringTable &table, const char *name) {
    char folder[260];
    GetKelMaraFolderPath(Localization_Folder, folder);
    CKMFile file;
    Require(file.Open((std::string(folder) + "\\" + name).c_str(), false, false) == 0,
            "the string table is in its folder");
    Require(table.Load_Table(&file) == 0, "the string table can be loaded");
}

std::string Find(CStringTable &table, const char *identifier) {
    CSafeStr text;
    table.Get_String_From_Identifier(identifier, text);
    return static_cast<const char *>(static_cast<char *>(text));
}

} // namespace

void Find_Strings() {
    Begin_Chapter("Strings in two languages");
    CStringTable english, german;
    Load(english, "english.ltx");
    Load(german, "german.ltx");
    Require(english.Count_Entries() == german.Count_Entries(), "both languages have as many strings");
    for (long i = 0; i < english.Count_Entries(); ++i) {
        CSafeStr identifier, other;
        english.Get_String_Identifier(i, identifier);
        german.Get_String_Identifier(i, other);
        Require(identifier == other, "both languages have the same identifiers");
        Require(!Find(german, identifier).empty(), "every string is found by its identifier");
    }
    Tell("%ld strings each; KMSTR_CANCEL is \"%s\" and \"%s\".", english.Count_Entries(),
         Find(english, "KMSTR_CANCEL").c_str(), Find(german, "KMSTR_CANCEL").c_str());
    Require(Find(german, "KMSTR_NO_SUCH_STRING").empty(), "an unknown identifier gives an empty text");
}
