#pragma once
// The suite's components on a machine that it is installed on, by their classes.

#include <kelmara/connectivity/owned_interface.h>
#include <reference_suite/installer/install_suite.h>

#include <tests/support/built_modules.h>
#include <tests/support/registry_verbs.h>

#include <kelmara/connectivity/component_interfaces.h>
#include <platform/kernel.h>

#include <cstring>

inline ComponentLocator Locator(const std::string &name, long kind) {
    ComponentLocator locator = {};
    std::memcpy(locator.name, name.data(), std::min(name.size(), sizeof locator.name));
    locator.kind = kind;
    return locator;
}

/// An open component with options.
struct Client {
    explicit Client(const std::string &name, long kind = Component_Configuration) {
        EXPECT_EQ(storage.Create(kind == Component_Location ? CLSID_LocationComponent
                                                            : CLSID_ConfigurationComponent,
                                 IID_IComponentStorageInterface),
                  S_OK);
        EXPECT_EQ(values.Query(storage.Get(), IID_IComponentValuesInterface), S_OK);
        EXPECT_EQ(Open(name, kind), 0);
    }
    long Open(const std::string &name, long kind) const {
        ComponentLocator locator = Locator(name, kind);
        return storage->Open_Component(&locator, 0);
    }
    long Lock() const { return storage->Set_Edit_Lock(1, 0); }
    long Unlock() const { return storage->Set_Edit_Lock(0, 0); }
    long Commit() const { return storage->Commit_Component(); }
    long Set(ComponentOption option, std::string text) const {
        return values->Set_Value(option.code, text.data(), static_cast<long>(text.size()) + 1);
    }
    std::string Get(ComponentOption option) const {
        char text[255] = "not written";
        values->Get_Value(option.code, text, sizeof text);
        return text;
    }

    OwnedInterface<IComponentStorageInterface> storage;
    OwnedInterface<IComponentValuesInterface> values;
};

/// At its end nothing is left of any object, so that the modules go, if only once a thread of theirs has.
class InstalledComponents : public MachineTest {
  protected:
    static constexpr char Store[] = "Software\\Dunmerit Software\\KelMara\\Components\\";

    void SetUp() override {
        MachineTest::SetUp();
        ASSERT_EQ(Install_Suite(Suite_Module("")), "");
        CoInitialize(nullptr);
    }
    void TearDown() override {
        for (const char *name :
             {"kmconfiguration.dll", "kmlocation.dll", "kmphonebook.dll", "kmconnection.dll"}) {
            CoFreeUnusedLibraries();
            for (int tries = 0; GetModuleHandleA(name) && tries < 1000; ++tries, CoFreeUnusedLibraries())
                Sleep(5);
            EXPECT_EQ(GetModuleHandleA(name), nullptr) << name;
        }
        CoUninitialize();
        MachineTest::TearDown();
    }
};
