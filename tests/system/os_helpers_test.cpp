#include <tests/support/replaced_import.h>
#include <tests/support/test_machine.h>

#include <kelmara/system/os_helpers.h>

#include <platform/kernel.h>
#include <platform/runtime.h>
#include <platform/security.h>

#include <csignal>

namespace {

using OsHelpers = MachineTest;

constexpr char Machine_Module[] = "kernel32.dll", Other_Module[] = "advapi32.dll";

int loads, frees;
HMODULE Count_Load(LPCSTR path) {
    ++loads;
    return LoadLibraryA(path);
}
BOOL Count_Free(HMODULE module) {
    ++frees;
    return FreeLibrary(module);
}

class WeakCalls : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        loads = frees = 0;
    }
    ReplacedImport load{"libkelmara.so", "LoadLibraryA", reinterpret_cast<void *>(Count_Load)};
    ReplacedImport free{"libkelmara.so", "FreeLibrary", reinterpret_cast<void *>(Count_Free)};
    std::string counts() const { return std::to_string(loads) + " " + std::to_string(frees); }
};

TEST_F(WeakCalls, HoldOneLibraryAtATime) {
    {
        CWeakAPICall call;
        EXPECT_EQ(call.Load_Call(Machine_Module, "GetTickCount"), reinterpret_cast<void *>(GetTickCount));
        EXPECT_EQ(counts(), "1 0");
        EXPECT_NE(call.Load_Call(Other_Module, "OpenProcessToken"), nullptr);
        EXPECT_EQ(counts(), "2 1");
        EXPECT_EQ(call.Load_Call(std::string(256, 'n').c_str(), "x"), nullptr);
        EXPECT_EQ(counts(), "2 1") << "refused, and the other is held on to";
        EXPECT_EQ(call.Load_Call("missing.dll", "x"), nullptr);
        EXPECT_EQ(call.Load_Call("missing.dll", "x"), nullptr);
        EXPECT_EQ(counts(), "3 2") << "not tried again";
        EXPECT_NE(call.Load_Call("KERNEL32.dll", "GetTickCount"), nullptr);
        EXPECT_EQ(call.Load_Call(std::string(255, 'n').c_str(), "x"), nullptr);
        EXPECT_EQ(counts(), "5 3");
    }
    EXPECT_EQ(counts(), "5 3") << "none is held";
}

TEST_F(WeakCalls, HaveCopiesWithALoadOfTheirOwn) {
    {
        CWeakAPICall call, assigned;
        call.Load_Call(Machine_Module, "GetTickCount");
        assigned.Load_Call(Other_Module, "OpenProcessToken");
        const CWeakAPICall copy(call);
        assigned = call;
        EXPECT_EQ(counts(), "4 1");
    }
    EXPECT_EQ(counts(), "4 4");
}

TEST_F(OsHelpers, StartProgramsAndLeaveNothingBehind) {
    std::string command = "z:\\bin\\sh -c \"echo done > '" + machine.Path("made") + "'\"";
    EXPECT_EQ(RunProcess(command.data()), 0);
    for (int tries = 0; tries < 1000 && machine.Read("made") != "done\n"; ++tries) Sleep(10);
    EXPECT_EQ(machine.Read("made"), "done\n");
    std::string missing = "z:\\bin\\no-such-program -x";
    EXPECT_EQ(RunProcess(missing.data()), 2);
    EXPECT_EQ(RunProcess(nullptr), 2);
}

TEST_F(OsHelpers, TellAnAdministrator) {
    Override_Machine_Setting("administrator", "yes");
    EXPECT_EQ(RunningAsAdministrator(), 1) << "before anybody has bound memory services";
    Override_Machine_Setting("administrator", "no");
    EXPECT_EQ(RunningAsAdministrator(), 0);
    Override_Machine_Setting("windows", "me");
    EXPECT_EQ(RunningAsAdministrator(), 1);
    Override_Machine_Setting("windows", nullptr);
    Override_Machine_Setting("administrator", "yes");
    {
        const ReplacedImport none("libkelmara.so", "AllocateAndInitializeSid",
                                  reinterpret_cast<void *>(+[] { return FALSE; }));
        EXPECT_EQ(RunningAsAdministrator(), 0);
    }
    {
        const ReplacedImport none("libkelmara.so", "OpenThreadToken", reinterpret_cast<void *>(+[] {
                                      SetLastError(ERROR_ACCESS_DENIED);
                                      return FALSE;
                                  }));
        EXPECT_EQ(RunningAsAdministrator(), 0);
    }
    Override_Machine_Setting("administrator", nullptr);
}

TEST_F(OsHelpers, TellTheWindows) {
    struct Row {
        const char *windows, *version;
        unsigned long flags;
    };
    for (const auto &[windows, version, flags] :
         {Row{"95", nullptr, 4}, Row{"98", nullptr, 8}, Row{"me", nullptr, 16}, Row{"nt4", nullptr, 1},
          Row{"2000", nullptr, 3}, Row{"xp", nullptr, 3}, Row{"xp", "6.0", 1}, Row{"98", "4.3", 0},
          Row{"98", "5.10", 0}}) {
        Override_Machine_Setting("windows", windows);
        Override_Machine_Setting("windows_version", version);
        unsigned long found = 99;
        CheckOsVersion(found);
        EXPECT_EQ(found, flags) << windows << " " << (version ? version : "");
    }
    Override_Machine_Setting("windows", nullptr);
    Override_Machine_Setting("windows_version", nullptr);
}

int next_random;
int Give_Random() {
    return next_random;
}

TEST_F(OsHelpers, DrawNumbersFromARange) {
    const ReplacedImport random("libkelmara.so", "Machine_Rand", reinterpret_cast<void *>(Give_Random));
    struct Row {
        int drawn;
        long low, high, number;
    };
    for (const auto &[drawn, low, high, number] :
         {Row{0, 5, 5, 5}, Row{32767, 5, 5, 6}, Row{16384, -10, 10, 0}, Row{32766, 1, 6, 6},
          Row{32767, 0, 65537, 65538}, Row{32767, 0, 65538, -65537}}) {
        next_random = drawn;
        EXPECT_EQ(RangeRandom(low, high), number) << drawn << " in " << low << " to " << high;
    }
}

TEST_F(OsHelpers, BreakIntoTheDebugger) {
    NullProc();
    EXPECT_EXIT(Debugger(), ::testing::KilledBySignal(SIGTRAP), "");
}

} // namespace
