#include <tests/support/built_modules.h>

std::string Test_Module(const std::string &name) {
    return std::string(TEST_MODULE_FOLDER) + "/" + name + ".so";
}

std::string Suite_Module(const std::string &name) {
    return std::string(TEST_SUITE_FOLDER) + "/" + name;
}
