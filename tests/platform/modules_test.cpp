#include <platform/kernel.h>
#include <platform/machine.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

// Each test puts fresh copies of the built modules below its machine's folder; c:\work is current.
class Modules : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        directory_ = std::filesystem::current_path();
        path_ = std::getenv("PATH");
        std::filesystem::create_directories(machine.Path("drive_c/work"));
        std::filesystem::current_path(machine.Path("drive_c/work"));
        Set_Debug_Output_Sink(
            [](const char *text, void *to) { *static_cast<std::string *>(to) += std::string(text) + " "; },
            &heard_);
        SetLastError(0);
    }
    void TearDown() override {
        Set_Debug_Output_Sink(nullptr, nullptr);
        for (const char *variable : {"TALKATIVE", "TALKATIVE_LOADS"}) unsetenv(variable);
        setenv("PATH", path_.c_str(), 1);
        std::filesystem::current_path(directory_);
        MachineTest::TearDown();
    }

    static std::string Built(const std::string &module) { return TEST_MODULE_FOLDER "/" + module + ".so"; }

    void Put(const std::string &module, const std::string &relative) const {
        const std::string path = machine.Path(relative);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::copy_file(Built(module), path);
    }

    static std::string File_Name(HMODULE module) {
        char path[1024];
        return GetModuleFileNameA(module, path, sizeof path) ? path : "(none)";
    }

    // Where a name leads to, which is let go again.
    static std::string Found_As(const std::string &name) {
        const HMODULE module = LoadLibraryA(name.c_str());
        if (!module) return "error " + std::to_string(GetLastError());
        const std::string path = File_Name(module);
        EXPECT_TRUE(FreeLibrary(module));
        return path;
    }

    // What the modules said since the last call.
    std::string Heard() { return std::exchange(heard_, {}); }

  private:
    std::filesystem::path directory_;
    std::string path_, heard_;
};

TEST_F(Modules, AreLoadedCountedAndFreed) {
    Put("plain", "drive_c/Suite/Plain.dll");
    EXPECT_EQ(GetModuleHandleA("c:\\suite\\plain.dll"), nullptr);
    SetLastError(77);
    const HMODULE module = LoadLibraryA("C:\\SUITE\\plain.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryA("..\\suite/PLAIN"), module);
    EXPECT_EQ(GetModuleHandleA("plain"), module) << "known by its bare name wherever it lies";
    EXPECT_EQ(GetModuleHandleA("c:\\suite\\plain.dll"), module);
    const auto answer = reinterpret_cast<int (*)()>(GetProcAddress(module, "Answer"));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(answer(), 42) << "one load is left";
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), 77u) << "what succeeds leaves the last error alone";
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(GetModuleHandleA("plain.dll"), nullptr);
    EXPECT_EQ(File_Name(module), "(none)");
}

TEST_F(Modules, GiveTheirOwnExportsOnly) {
    Put("plain", "drive_c/plain.dll");
    const HMODULE module = LoadLibraryA("c:\\plain");
    const HMODULE as_data = LoadLibraryExA("c:\\plain", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    EXPECT_EQ(*reinterpret_cast<int *>(GetProcAddress(module, "answer_word")), 42);
    for (const auto &[in, name] : {
             std::pair{module, "answer"},
             {module, "malloc"},
             {module, "LoadLibraryA"},
             {module, ""},
             {module, static_cast<const char *>(nullptr)},
             {module, reinterpret_cast<const char *>(0xFFFF)},
             {HMODULE{}, "Answer"},
             {GetModuleHandleA("kernel32"), "malloc"},
         }) {
        SetLastError(0);
        EXPECT_EQ(GetProcAddress(in, name), nullptr) << in;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND)) << in;
    }
    for (const HMODULE none : {reinterpret_cast<HMODULE>(-1L), reinterpret_cast<HMODULE>(0x1000), as_data}) {
        EXPECT_EQ(GetProcAddress(none, "Answer"), nullptr) << none;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND)) << none;
    }
    EXPECT_TRUE(FreeLibrary(as_data));
    EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(Modules, AreSoughtInOrder) {
    const std::string name = "kelmara-test-" + std::to_string(GetCurrentProcessId());
    const auto beside_program =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / (name + ".dll");
    setenv("PATH", (machine.Path("nowhere") + "::" + machine.Path("drive_d/path")).c_str(), 1);
    EXPECT_EQ(Found_As(name), "error 126");
    for (const auto &[folder, found] : {std::pair{"drive_d/path", "D:\\path\\"},
                                        {"drive_c/Windows", "C:\\Windows\\"},
                                        {"drive_c/Windows/SYSTEM32", "C:\\Windows\\SYSTEM32\\"},
                                        {"drive_c/work", "C:\\work\\"}}) {
        Put("plain", std::string(folder) + "/" + name + ".dll");
        EXPECT_EQ(Found_As(name), found + name + ".dll");
    }
    const HMODULE current = LoadLibraryA(name.c_str());
    std::filesystem::current_path(machine.Path("drive_d/path"));
    EXPECT_EQ(File_Name(current), "C:\\work\\" + name + ".dll")
        << "though the current directory has moved on";
    EXPECT_TRUE(FreeLibrary(current));
    EXPECT_EQ(Found_As(name), "D:\\path\\" + name + ".dll");
    std::filesystem::copy_file(Built("plain"), beside_program);
    EXPECT_EQ(Found_As(name).substr(0, 3), "Z:\\");
    std::filesystem::remove(beside_program);
}

TEST_F(Modules, AreFoundUnderTheHostsNamesToo) {
    for (const auto &[file, name, found] : std::vector<std::tuple<const char *, const char *, bool>>{
             {"one.DLL", "one", true},
             {"two.so", "TWO", true},
             {"libThree.so", "three.dll", true},
             {"LIBfour.SO", "c:\\work\\four.ocx", true},
             {"five.two.so", "five.two.dll", true},
             {"six", "six.", true},
             {"seven", "seven", false},
             {"eight.dll", "eight.", false},
             {"nine.so", ".\\nine", true},
             {"ten.so", "c:ten", true},
         }) {
        Put("plain", std::string("drive_c/work/") + file);
        EXPECT_EQ(Found_As(name), found ? std::string("C:\\work\\") + file : "error 126") << name;
    }
    Put("plain", "drive_c/work/one.so");
    EXPECT_EQ(Found_As("one"), "C:\\work\\one.DLL") << "the name itself goes before the host's";
    std::filesystem::create_directory("one.ocx");
    EXPECT_EQ(Found_As("one.ocx"), "C:\\work\\one.so") << "a folder is no module";
    for (const char *none : {"libm.so.6", "libc.so.6.", "libdl.so.2", "m", ".", "..", "c:\\", "kernel32.",
                             "c:\\windows\\kernel32.dll", "bad|name", "q:\\x.dll"}) {
        EXPECT_EQ(Found_As(none), "error 126") << none << ": the host's own libraries are out of reach";
        EXPECT_EQ(GetModuleHandleA(none), nullptr) << none;
    }
}

TEST_F(Modules, NeedAName) {
    for (const char *none : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(LoadLibraryA(none), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
}

TEST_F(Modules, IncludeTheMachineAndTheProgram) {
    const HMODULE platform = GetModuleHandleA("kernel32.dll");
    for (const char *name : {"KERNEL32", "advapi32.DLL", "User32", "kelmara_platform"}) {
        EXPECT_EQ(GetModuleHandleA(name), platform) << name;
        EXPECT_EQ(LoadLibraryA(name), platform) << name;
        EXPECT_TRUE(FreeLibrary(platform));
    }
    EXPECT_EQ(GetProcAddress(platform, "GetTickCount"), reinterpret_cast<FARPROC>(&GetTickCount));
    char host[1024];
    ASSERT_TRUE(Host_Path(File_Name(GetModuleHandleA(nullptr)).c_str(), host, sizeof host));
    EXPECT_EQ(host, std::filesystem::read_symlink("/proc/self/exe"));
}

TEST_F(Modules, TellTheirFileNameCutToTheBuffer) {
    const std::string whole = File_Name(nullptr);
    for (const std::size_t room : {whole.size() + 1, whole.size(), std::size_t{1}}) {
        std::vector<char> path(room + 1, '#');
        SetLastError(0);
        const bool fits = room > whole.size();
        EXPECT_EQ(GetModuleFileNameA(nullptr, path.data(), room), fits ? whole.size() : room);
        EXPECT_EQ(path.data(), whole.substr(0, room - 1));
        EXPECT_EQ(path[room], '#');
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(fits ? NO_ERROR : ERROR_INSUFFICIENT_BUFFER));
    }
    std::string longest = "C:";
    while (longest.size() < 200) longest += "\\" + std::string(20, 'd');
    longest += "\\" + std::string(254 - longest.size() - 5, 'm') + ".dll";
    std::string relative = "drive_c" + longest.substr(2);
    std::replace(relative.begin(), relative.end(), '\\', '/');
    Put("plain", relative);
    EXPECT_EQ(Found_As(longest), longest);
}

TEST_F(Modules, AreToldWhenTheyComeAndGo) {
    Put("talkative", "drive_c/work/talkative.dll");
    const HMODULE module = LoadLibraryA("talkative");
    EXPECT_EQ(Heard(), "constructed attached ");
    EXPECT_EQ(GetLastError(), 0u) << "though the module changed it";
    EXPECT_EQ(reinterpret_cast<HINSTANCE (*)()>(GetProcAddress(module, "Own_Handle"))(), module);
    EXPECT_EQ(LoadLibraryA("talkative"), module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Heard(), "");
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Heard(), "detached destroyed ");
}

TEST_F(Modules, ThatSayNoAreUnloaded) {
    Put("talkative", "drive_c/work/talkative.dll");
    for (const auto &[answer, heard] : {std::pair{"refuse", "constructed attached detached destroyed "},
                                        {"throw", "constructed attached destroyed "}}) {
        setenv("TALKATIVE", answer, 1);
        EXPECT_EQ(Found_As("talkative"), "error 1114");
        EXPECT_EQ(Heard(), heard);
        const HMODULE module = LoadLibraryExA("talkative", nullptr, DONT_RESOLVE_DLL_REFERENCES);
        EXPECT_EQ(Heard(), "constructed ");
        EXPECT_EQ(Found_As("talkative"), "error 1114");
        EXPECT_NE(GetProcAddress(module, "Own_Handle"), nullptr) << "the other load stands";
        Heard();
        EXPECT_TRUE(FreeLibrary(module));
        EXPECT_EQ(Heard(), "destroyed ");
    }
}

SECOND_PROCESS(loader_of_a_thrower) {
    setenv("TALKATIVE", "throw in constructor", 1);
    try {
        LoadLibraryA("c:\\talkative.dll");
    } catch (...) {
    }
    process.Tell("went on");
    return 0;
}

TEST_F(Modules, WhoseConstructorThrowsEndTheProcess) {
    Put("talkative", "drive_c/talkative.dll");
    SecondProcess loader("loader_of_a_thrower");
    EXPECT_EQ(loader.Hear(), "");
    EXPECT_NE(loader.Wait(), 0);
}

TEST_F(Modules, AsDataFilesRunNothing) {
    Put("talkative", "drive_c/windows/system32/winreg.dll");
    machine.Write("drive_c/work/text.dll", "no module at all");
    for (const char *name : {"winreg.dll", "text", "kernel32.dll"}) {
        const HMODULE first = LoadLibraryExA(name, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        const HMODULE second = LoadLibraryExA(name, nullptr, LOAD_LIBRARY_AS_DATAFILE);
        EXPECT_EQ(reinterpret_cast<unsigned long>(first) & 1, 1u) << name;
        EXPECT_EQ(File_Name(first), "(none)");
        EXPECT_TRUE(FreeLibrary(first));
        EXPECT_TRUE(FreeLibrary(second));
        EXPECT_FALSE(FreeLibrary(first));
    }
    EXPECT_EQ(LoadLibraryExA("nowhere.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(Heard(), "");
}

TEST_F(Modules, ThatCannotBeLoadedAreRefused) {
    machine.Write("drive_c/work/text.dll", std::string(5000, 'x'));
    EXPECT_EQ(Found_As("text"), "error 193");
    EXPECT_EQ(Found_As("z:\\bin\\sh."), "error 193") << "of another word size";
    Put("unresolved", "drive_c/work/unresolved.dll");
    EXPECT_EQ(Found_As("unresolved"), "error 126");
    EXPECT_NE(Heard().find("Nobody_Has_This"), std::string::npos) << "the reason is the debugger's";

    std::ostringstream content;
    content << std::ifstream(Built("plain"), std::ios::binary).rdbuf();
    const std::string whole = content.str();
    int number = 0;
    const auto try_it = [&](const std::string &bytes) {
        const std::string name = "cut" + std::to_string(number++);
        machine.Write("drive_c/work/" + name + ".dll", bytes);
        return Found_As(name);
    };
    for (std::size_t length = 0; length < whole.size(); length += length < 400 ? 13 : 997) {
        const bool behind_the_segments = length >= 4096; // is not missed
        EXPECT_TRUE(try_it(whole.substr(0, length)) == "error 193" || behind_the_segments) << length;
    }
    for (const std::size_t at : {0u, 3u, 4u, 5u, 16u, 18u, 31u, 42u, 45u}) { // fields of the header
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0x40);
        EXPECT_EQ(try_it(changed), "error 193") << at;
    }
}

TEST_F(Modules, MayLoadOthersWhileTheyComeOnAnyThread) {
    Put("talkative", "drive_c/work/talkative.dll");
    Put("plain", "drive_c/work/plain.dll");
    setenv("TALKATIVE_LOADS", "plain", 1);
    const HMODULE module = LoadLibraryA("talkative"), loaded = GetModuleHandleA("plain");
    EXPECT_TRUE(FreeLibrary(loaded));
    EXPECT_TRUE(FreeLibrary(loaded)) << "from its constructor and from its DllMain";
    EXPECT_FALSE(FreeLibrary(loaded));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Heard(), "constructed attached detached destroyed ");

    Set_Debug_Output_Sink(nullptr, nullptr);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (const char *name : {"talkative", "plain", "talkative", "plain"}) {
        threads.emplace_back([&wrong, name] {
            for (int i = 0; i < 200; ++i) {
                const HMODULE mine = LoadLibraryA(name);
                if (!mine || !GetProcAddress(mine, *name == 't' ? "Own_Handle" : "Answer")) ++wrong;
                if (!FreeLibrary(mine)) ++wrong;
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(GetModuleHandleA("talkative"), nullptr);
    while (FreeLibrary(GetModuleHandleA("plain"))) { // what the other module loaded is its own
    }
    EXPECT_EQ(GetModuleHandleA("plain"), nullptr);
}

} // namespace
