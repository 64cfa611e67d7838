// The registry, directories, and a file that is saved whole or not at all.
#include <kelmara/kelmara.h>

#include <cstdio>

int main() {
    CRegMaster registry;
    if (!registry.CreateKey(HKEY_CURRENT_USER, "Software\\System Example")) return 1;
    registry.SetRegEntry("Colour", "blue"); // on the disk when the call returns
    registry.SetRegEntry("Size", 12);
    char colour[16] = "";
    long size = 0;
    registry.GetRegEntry("Colour", colour, sizeof colour);
    registry.GetRegEntry("Size", &size);
    std::printf("%s %ld\n", colour, size);
    if (!registry.CreateSubkey("Windows")) return 1; // one level down
    registry.CloseSubkey();                          // and up again

    DirCreate("c:\\example\\letters");
    CKMFile letter;
    if (letter.Open_With_Rollback("c:\\example\\letters\\one.txt") != 0) return 1;
    if (letter.Write("Dear reader", 11, false) != 0) letter.Rollback();
    if (letter.Close() != 0) return 1; // now it has its name

    if (letter.Open("c:\\example\\letters\\one.txt", false, false) != 0) return 1;
    std::printf("%d bytes; a missing file answers %d\n", letter.GetLength(),
                CKMFile().Open("c:\\missing.txt", false, false));
    letter.Close();
    return DirDestroyAll("c:\\example");
}
