#include <kelmara/suite/folders.h>

#include <tests/support/registry_verbs.h>
#include <tests/support/test_machine.h>
#include <tests/support/test_memory.h>

#include <cstring>

namespace {

class Folders : public MachineTest {
  protected:
    /// Beside the 260 bytes nothing may be touched.
    static std::string Folder(int number) {
        char out[MAX_PATH + 8];
        std::memset(out, 'x', sizeof out);
        GetKelMaraFolderPath(number, out);
        EXPECT_EQ(std::string(out + MAX_PATH, 8), "xxxxxxxx");
        const void *const end = std::memchr(out, 0, MAX_PATH);
        EXPECT_TRUE(end) << "no terminator";
        return end ? out : "";
    }
};

TEST_F(Folders, AreWhatTheInstallationWrote) {
    EXPECT_EQ(Folder(8), "") << "no suite at all";
    const char *const names[] = {"Plugins",        "Prefs Folders", "Templates", "Content",  "Scripts",
                                 "ScriptIncludes", "Bin",           "Root",      "Database", "Localization"};
    {
        const TestKey suite("Software\\dunmerit software\\kelmara", HKEY_LOCAL_MACHINE);
        EXPECT_EQ(Folder(8), "");
        for (const char *name : names) {
            const std::string text = std::string("c:\\") + name + "\\";
            suite.Set(name, {text.c_str(), text.size() + 1});
        }
    }
    for (int number = 1; number <= 10; ++number) {
        EXPECT_EQ(Folder(number), std::string("c:\\") + names[number - 1] + "\\");
    }
    for (int number : {0, 11, -1, 0x7FFFFFFF}) EXPECT_EQ(Folder(number), "") << number;
    GetKelMaraFolderPath(8, nullptr);
    const FailingMemory none(1, true);
    EXPECT_EQ(Folder(8), "c:\\Root\\") << "it needs no memory";
}

TEST_F(Folders, FitTheirBuffer) {
    const TestKey suite("Software\\dunmerit software\\kelmara", HKEY_LOCAL_MACHINE);
    const auto stored = [&](const std::string &bytes, DWORD type = REG_SZ) {
        suite.Set("Bin", bytes, type);
        return Folder(7);
    };
    const std::string longest(259, 'p');
    EXPECT_EQ(stored(longest + '\0'), longest);
    EXPECT_EQ(stored(longest), longest) << "without its terminator";
    EXPECT_EQ(stored("short", REG_BINARY), "short");
    EXPECT_EQ(stored(longest + 'p'), "") << "no room for a terminator";
    EXPECT_EQ(stored(longest + "p" + '\0'), "");
    EXPECT_EQ(stored(""), "");
}

} // namespace
