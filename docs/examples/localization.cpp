// A string table is made and saved, and its texts replace identifiers.
#include <kelmara/kelmara.h>

#include <cstdio>

static bool Make_Table(const char *path) {
    CStringTable table(true); // to be edited
    if (table.New_Table() != 0) return false;
    table.Import_String("Cancel\tEX_CANCEL\t0\ta button");
    table.Import_String("Cancel?\tEX_QUESTION\t0\ta title");
    table.Set_String(1, CSafeStr("Really cancel?"));
    CKMFile file;
    return file.Open(path, true, true) == 0 && table.Save_Changes(&file) == 0 && file.Close() == 0;
}

int main() {
    if (!Make_Table("c:\\example.ltx")) return 1;

    CWorldBeat beat;
    if (beat.Load_Localization("c:\\example.ltx", true) != 0) return 1; // true: a whole path
    CSafeStr text("^EX_CANCEL or not: ^EX_QUESTION");
    beat.Localize_String(text);
    std::printf("%s\n", static_cast<char *>(text));

    char small[4];
    std::printf("into 4 bytes: %ld\n", beat.Get_String("EX_CANCEL", small, sizeof small));
    CSafeStr missing("something");
    beat.Get_String("EX_UNKNOWN", missing);
    std::printf("an unknown identifier has %d characters\n", missing.Length());
    return 0;
}
