#pragma once
// A machine on whose suite key companions are named, and the processes that load them.

#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>

#include <filesystem>
#include <utility>

class CompanionTest : public MachineTest {
  protected:
    using Outcome = std::pair<int, std::string>; // exit code, standard error

    void Write_Value(const std::string &value, const std::string &text) const {
        TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE)
            .Set(value, {text.c_str(), text.size() + 1});
    }
    /// Puts a file of the host on the machine, and names it in the registry.
    void Install_File(const std::string &file, const std::string &value,
                      const std::string &windows_path) const {
        char path[4096];
        ASSERT_TRUE(Host_Path(windows_path.c_str(), path, sizeof path));
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(file, path, std::filesystem::copy_options::overwrite_existing);
        Write_Value(value, windows_path);
    }
    /// The same with a module of tests/modules.
    void Install(const std::string &module, const std::string &value,
                 const std::string &windows_path = "C:\\m.dll") const {
        Install_File(Test_Module(module), value, windows_path);
    }
    static Outcome Run(const std::string &role, const std::vector<std::string> &arguments = {}) {
        SecondProcess process(role, arguments);
        const int code = process.Wait();
        return {code, process.Errors()};
    }
};
