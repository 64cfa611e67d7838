// What a program of the suite asks at its start.
#include <kelmara/kelmara.h>

#include <platform/com.h>

#include <cstdio>

int main() {
    Init_Kelmara(); // ends the process when there is no room to run

    char folder[260];
    GetKelMaraFolderPath(10, folder);
    std::printf("string tables: %s\n", folder);
    GetKelMaraFolderPath(11, folder);
    std::printf("folder 11 is %s\n", *folder ? folder : "none");

    std::printf("Office: %d, Off*ice: %d\n", Is_Valid_Component_Name("Office"),
                Is_Valid_Component_Name("Off*ice"));

    // The server is reached through COM, so a thread without it is refused.
    std::printf("without COM: %08lx\n", static_cast<unsigned long>(Verify_Kelmara()));
    return 0;
}
