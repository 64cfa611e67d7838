// install_suite: puts the suite on the machine that KELMARA_MACHINE names.

#include <reference_suite/installer/install_suite.h>

#include <platform/machine.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

int main(int argc, char **argv) {
    if (argc > 1) {
        const bool help = std::strcmp(argv[1], "--help") == 0;
        std::fprintf(help ? stdout : stderr,
                     "usage: install_suite\n"
                     "Puts the suite on the machine in the folder that KELMARA_MACHINE names.\n");
        return help ? 0 : 2;
    }
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string problem = Install_Suite(program.parent_path().parent_path() / "suite");
    if (!problem.empty()) {
        std::fprintf(stderr, "install_suite: %s\n", problem.c_str());
        return 1;
    }
    std::printf("The suite is installed on the machine in %s.\n", Machine_Folder());
    return 0;
}
