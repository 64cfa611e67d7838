// What somebody writes who has only the installed library: a fact shared by all processes of the machine, and
// a text and a list of the library's own.

#include <kelmara/kelmara.h>
#include <platform/files.h>
#include <platform/machine.h>

#include <cstdio>
#include <cstring>

int main() {
    CAtomTable table;
    if (table.Initialize("EXAMPLE") != 0) return 1;
    table.New_Atom(1, 1, "hello", 6);
    char data[6] = "";
    if (!table.Get_Atom_Data(1, 1, data, sizeof data) || std::strcmp(data, "hello") != 0) return 2;

    CSafeStr text("shared on ");
    text += Machine_Folder();
    std::puts(text);

    char path[MAX_PATH] = "";
    GetWindowsDirectoryA(path, sizeof path);
    return path[0] ? 0 : 3;
}
