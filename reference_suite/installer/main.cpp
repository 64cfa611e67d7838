// install_suite: puts the suite on the machine that KELMARA_MACHINE names.

#include <reference_suite/installer/install_suite.h>

#include <platform/machine.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

// In the tree that built it the modules lie beside the program's folder, in a package below its libraries.
fs::path Suite_Folder() {
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    const fs::path packaged = folder / INSTALLED_SUITE;
    return fs::exists(packaged) ? packaged : folder.parent_path() / "suite";
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) {
        const bool help = std::strcmp(argv[1], "--help") == 0;
        std::fprintf(help ? stdout : stderr,
                     "usage: install_suite\n"
                     "Puts the suite on the machine in the folder that KELMARA_MACHINE names.\n");
        return help ? 0 : 2;
    }
    const std::string problem = Install_Suite(Suite_Folder());
    if (!problem.empty()) {
        std::fprintf(stderr, "install_suite: %s\n", problem.c_str());
        return 1;
    }
    std::printf("The suite is installed on the machine in %s.\n", Machine_Folder());
    return 0;
}
