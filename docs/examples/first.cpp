// Counts its runs on this machine, and leaves a fact for every other process of the machine to see.
#include <kelmara/kelmara.h>

#include <cstdio>
#include <cstring>

int main() {
    Init_Kelmara(); // binds the memory services; tells the user and ends the process when the disk is full

    CRegMaster registry;
    if (!registry.CreateKey(HKEY_CURRENT_USER, "Software\\First Program")) return 1;
    const unsigned long runs = registry.IncrDword("Runs");
    std::printf("run number %lu\n", runs);

    CAtomTable atoms;
    if (atoms.Initialize("FIRST-PROGRAM") != 0) return 1;
    const char fact[] = "the first program is here";
    if (atoms.New_Atom(1, 42, fact, sizeof fact) < 0) return 1;

    CKMFile file;
    char line[64];
    std::snprintf(line, sizeof line, "run number %lu\r\n", runs);
    if (file.Open_Append("c:\\runs.txt") != 0) return 1;
    if (file.Write(line, static_cast<long>(std::strlen(line)), true) != 0) return 1;
    file.Close();

    std::puts("press Enter to end");
    std::getchar();
    atoms.Delete_Atom(1, 42);
    return 0;
}
