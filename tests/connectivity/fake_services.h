#pragma once
// Telephony and remote access as a test tells them to be: bound by the library by name, as the real ones are,
// for the whole process. What is not set answers as a good service does.

#include <tests/support/replaced_import.h>
#include <tests/support/test_machine.h>

#include <platform/telephony.h>

#include <functional>

struct FakeLine {
    std::string name;
    DWORD format = STRINGFORMAT_ASCII;
    bool negotiates = true;
    std::function<void(LINEDEVCAPS &)> change = nullptr; // as the last step
};

struct FakeServices {
    std::vector<std::string> locations; // their permanent ids are 100 and up
    std::vector<FakeLine> lines;
    std::vector<RASDEVINFOA> devices;
    std::string dialable, displayable; // for whatever address
    LONG error = 0;                    // of every entry of telephony
    std::function<void(LINETRANSLATECAPS &)> caps;
    std::function<void(LINETRANSLATEOUTPUT &)> output;
    std::function<void(RASDEVINFOA *, DWORD &, DWORD &)> list;

    std::vector<DWORD> sizes, selected; // of records of locations; of locations made the current one
    std::string translated;             // arguments of the last translation
    int loads = 0, searches = 0;        // of modules and entries of services
};
extern FakeServices services;

/// Stands for both modules in whatever the library loads and looks up while it lives: without the entry
/// `lacking`, or without modules for "*".
class ServicesInPlace {
  public:
    explicit ServicesInPlace(const std::string &lacking = "");

  private:
    ReplacedImport load_, find_;
};

class ServicesTest : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        services = {};
    }
    void TearDown() override {
        Override_Machine_Setting("windows", nullptr);
        MachineTest::TearDown();
    }
    ServicesInPlace in_place;
};
