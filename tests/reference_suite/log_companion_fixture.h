#pragma once
// The suite's log companion, loaded on a machine that has a root folder for its log.

#include <reference_suite/companions/log/log_companion.h>

#include <platform/kernel.h>

#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

/// Loaded and initialised for the length of a scope.
class LogCompanion {
  public:
    LogCompanion() {
        EXPECT_TRUE(module_) << GetLastError();
        EXPECT_EQ(initialize(), 0);
    }
    ~LogCompanion() { FreeLibrary(module_); }
    LogCompanion(const LogCompanion &) = delete;
    LogCompanion &operator=(const LogCompanion &) = delete;

    void Write(std::string text) const { queue_entry(text.data(), static_cast<long>(text.size()) + 1, 0, 0); }
    void Send(long code, std::string data) const {
        queue_entry(data.data(), static_cast<long>(data.size()), code, 1);
    }

  private:
    template <class Routine>
    Routine *Find(const char *name) const {
        return reinterpret_cast<Routine *>(GetProcAddress(module_, name));
    }

    const HMODULE module_ = LoadLibraryA(("z:" + Suite_Module("kmlog.so")).c_str());

  public:
    decltype(&Initialize) const initialize = Find<decltype(Initialize)>("Initialize");
    decltype(&Queue_Entry) const queue_entry = Find<decltype(Queue_Entry)>("Queue_Entry");
    decltype(&Get_Messages) const get_messages = Find<decltype(Get_Messages)>("Get_Messages");
    decltype(&Stop_Messages) const stop_messages = Find<decltype(Stop_Messages)>("Stop_Messages");
    decltype(&Run_Cleanup_Thread) const run_cleanup =
        Find<decltype(Run_Cleanup_Thread)>("Run_Cleanup_Thread");
};

class LogCompanionTest : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        machine.Write("drive_c/suite/readme", "");
        TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE).Set("Root", "c:\\suite");
    }
    std::string Path() const { return machine.Path("drive_c/suite/log.html"); }
    std::string Log() const { return machine.Read("drive_c/suite/log.html"); }
};
