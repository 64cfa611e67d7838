#include <tests/support/handles.h>
#include <tests/support/test_machine.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

namespace fs = std::filesystem;

// Each test puts fresh copies of the built modules below its machine's folder; c:\work is current.
class Modules : public MachineTest {
  protected:
    Modules() {
        Go_To("drive_c/work");
        Set_Debug_Output_Sink(
            [](const char *text, void *to) { *static_cast<std::string *>(to) += std::string(text) + " "; },
            &heard_);
        SetLastError(0);
    }
    ~Modules() override {
        Set_Debug_Output_Sink(nullptr, nullptr);
        for (const char *variable : {"TALKATIVE", "TALKATIVE_LOADS"}) unsetenv(variable);
        setenv("PATH", path_.c_str(), 1);
        fs::current_path(directory_);
    }

    void Go_To(const std::string &folder) const {
        fs::create_directories(machine.Path(folder));
        fs::permissions(machine.Path(folder), fs::perms(0755));
        fs::current_path(machine.Path(folder));
    }
    void Put(const std::string &module, const std::string &relative) const {
        const fs::path path = machine.Path(relative);
        fs::create_directories(path.parent_path());
        fs::permissions(path.parent_path(), fs::perms(0755)); // whatever the umask
        fs::copy_file(TEST_MODULE_FOLDER "/" + module + ".so", path);
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
    const fs::path directory_ = fs::current_path();
    const std::string path_ = std::getenv("PATH");
    std::string heard_;
};

TEST_F(Modules, AreLoadedCountedAndFreed) {
    Put("talkative", "drive_c/Suite/Talkative.dll");
    EXPECT_EQ(GetModuleHandleA("c:\\suite\\talkative.dll"), nullptr);
    SetLastError(77);
    const HMODULE module = LoadLibraryA("C:\\SUITE\\talkative.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Heard(), "constructed attached ");
    EXPECT_EQ(LoadLibraryA("..\\suite/TALKATIVE"), module);
    EXPECT_EQ(GetModuleHandleA("talkative"), module) << "known by its bare name wherever it lies";
    EXPECT_EQ(GetModuleHandleA("c:\\suite\\talkative.dll"), module);
    const auto own_handle = reinterpret_cast<HINSTANCE (*)()>(GetProcAddress(module, "Own_Handle"));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(own_handle(), module) << "one load is left";
    EXPECT_EQ(Heard(), "");
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Heard(), "detached destroyed ");
    EXPECT_EQ(GetLastError(), 77u) << "what succeeds leaves it alone, though the module changed it";
    EXPECT_EQ(Error_Of(FreeLibrary(module)), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(GetModuleHandleA("talkative.dll"), nullptr);
    EXPECT_EQ(File_Name(module), "(none)");
}

TEST_F(Modules, GiveTheirOwnExportsOnly) {
    Put("plain", "drive_c/work/plain.dll");
    const HMODULE module = LoadLibraryA("plain");
    const HMODULE as_data = LoadLibraryExA("plain", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    EXPECT_EQ(*reinterpret_cast<int *>(GetProcAddress(module, "answer_word")), 42);
    for (const char *none : {"answer", "malloc", "LoadLibraryA", "", static_cast<const char *>(nullptr),
                             reinterpret_cast<const char *>(0xFFFF)}) {
        SetLastError(0);
        EXPECT_EQ(Error_Of(GetProcAddress(module, none)), ERROR_PROC_NOT_FOUND);
    }
    EXPECT_EQ(Error_Of(GetProcAddress(GetModuleHandleA("kernel32"), "malloc")), ERROR_PROC_NOT_FOUND);
    for (const HMODULE none : {reinterpret_cast<HMODULE>(-1L), reinterpret_cast<HMODULE>(0x1000), as_data}) {
        EXPECT_EQ(Error_Of(GetProcAddress(none, "Answer")), ERROR_MOD_NOT_FOUND) << none;
    }
    EXPECT_TRUE(FreeLibrary(as_data));
    EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(Modules, AreSoughtInOrder) {
    const std::string name = "kelmara-test-" + std::to_string(GetCurrentProcessId());
    const fs::path beside_program = fs::read_symlink("/proc/self/exe").parent_path() / (name + ".dll");
    setenv("PATH", (machine.Path("nowhere") + "::" + machine.Path("drive_d/path")).c_str(), 1);
    EXPECT_EQ(Found_As(name), "error 126");
    for (const auto &[folder, found] : {std::pair{"drive_d/path", "D:\\path\\"},
                                        {"drive_c/Windows", "C:\\Windows\\"},
                                        {"drive_c/Windows/SYSTEM32", "C:\\Windows\\SYSTEM32\\"},
                                        {"drive_c/work", "C:\\work\\"}}) {
        Put("plain", std::string(folder) + "/" + name + ".dll");
        EXPECT_EQ(Found_As(name), found + name + ".dll");
    }
    fs::copy_file(TEST_MODULE_FOLDER "/plain.so", beside_program);
    EXPECT_EQ(Found_As(name).substr(0, 3), "Z:\\");
    fs::remove(beside_program);
}

TEST_F(Modules, AreFoundUnderTheHostsNamesToo) {
    for (const auto &[file, name] : {std::pair{"one.DLL", "one"},
                                     {"two.so", "TWO"},
                                     {"libThree.so", "c:three.dll"},
                                     {"LIBfour.SO", "c:\\work\\four.ocx"},
                                     {"five", "five."}}) {
        Put("plain", std::string("drive_c/work/") + file);
        EXPECT_EQ(Found_As(name), std::string("C:\\work\\") + file) << name;
    }
    Put("plain", "drive_c/work/one.so");
    EXPECT_EQ(Found_As("one"), "C:\\work\\one.DLL") << "the name itself goes before the host's";
    fs::create_directory("one.ocx");
    EXPECT_EQ(Found_As("one.ocx"), "C:\\work\\one.so") << "a folder is no module";
    for (const char *none : {"libm.so.6", "libc.so.6.", "libdl.so.2", "m", ".", "..", "c:\\", "kernel32.",
                             "c:\\windows\\kernel32.dll", "bad|name", "q:\\x.dll"}) {
        EXPECT_EQ(Found_As(none), "error 126") << none << ": the host's own libraries are out of reach";
        EXPECT_EQ(GetModuleHandleA(none), nullptr) << none;
    }
    for (const char *none : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(Error_Of(LoadLibraryA(none)), ERROR_INVALID_PARAMETER);
    }
}

TEST_F(Modules, IncludeTheMachineAndTheProgram) {
    const HMODULE platform = GetModuleHandleA("kernel32.dll");
    for (const char *name : {"KERNEL32", "advapi32.DLL", "User32", "kelmara_platform"}) {
        EXPECT_EQ(GetModuleHandleA(name), platform) << name;
        EXPECT_EQ(LoadLibraryA(name), platform) << name;
        EXPECT_TRUE(FreeLibrary(platform));
    }
    char host[1024];
    ASSERT_TRUE(Host_Path(File_Name(GetModuleHandleA(nullptr)).c_str(), host, sizeof host));
    EXPECT_EQ(host, fs::read_symlink("/proc/self/exe"));
}

TEST_F(Modules, TellTheirFileNameCutToTheBuffer) {
    const std::string whole = File_Name(nullptr);
    for (const std::size_t room : {whole.size() + 1, whole.size()}) {
        std::vector<char> path(room + 1, '#');
        SetLastError(0);
        const bool fits = room > whole.size();
        EXPECT_EQ(GetModuleFileNameA(nullptr, path.data(), room), fits ? whole.size() : room);
        EXPECT_EQ(path.data(), whole.substr(0, room - 1));
        EXPECT_EQ(path[room], '#');
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(fits ? NO_ERROR : ERROR_INSUFFICIENT_BUFFER));
    }
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

TEST_F(Modules, AsDataFilesRunNothing) {
    Put("talkative", "drive_c/windows/system32/winreg.dll");
    machine.Write("drive_c/work/text.dll", "no module at all");
    const auto Load = [](const char *name) {
        return LoadLibraryExA(name, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    };
    for (const char *name : {"winreg.dll", "text", "kernel32.dll"}) {
        const HMODULE first = Load(name), second = Load(name);
        EXPECT_EQ(reinterpret_cast<unsigned long>(first) & 1, 1u) << name;
        EXPECT_EQ(File_Name(first), "(none)");
        EXPECT_TRUE(FreeLibrary(first));
        EXPECT_TRUE(FreeLibrary(second));
        EXPECT_FALSE(FreeLibrary(first));
    }
    EXPECT_EQ(Error_Of(Load("nowhere.dll")), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(Heard(), "");
}

TEST_F(Modules, ThatCannotBeLoadedAreRefused) {
    machine.Write("drive_c/work/text.dll", std::string(5000, 'x'));
    EXPECT_EQ(Found_As("text"), "error 193");
    EXPECT_EQ(Found_As("z:\\bin\\sh."), "error 193") << "of another word size";
    Put("unresolved", "drive_c/work/unresolved.dll");
    EXPECT_EQ(Found_As("unresolved"), "error 126");
    EXPECT_NE(Heard().find("Nobody_Has_This"), std::string::npos) << "the reason is the debugger's";

    Put("plain", "drive_c/work/plain.dll");
    const std::string whole = machine.Read("drive_c/work/plain.dll");
    const auto try_it = [&](const std::string &bytes) {
        machine.Write("drive_c/work/damaged.dll", bytes);
        return Found_As("damaged");
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
