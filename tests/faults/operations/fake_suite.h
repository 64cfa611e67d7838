#pragma once
// The suite's components as the library creates them: one object for all, which fails only where there is no
// memory for it. It keeps nothing that would ask for some.

#include <kelmara/connectivity/component_interfaces.h>
#include <tests/connectivity/fake_services.h>

#include <platform/kernel.h>

#include <cstring>
#include <new>

inline bool Has_Memory() {
    void *const block = ::operator new(8, std::nothrow);
    ::operator delete(block);
    return block != nullptr;
}

/// All interfaces at once. Options have one text each, set ones too.
class FakeComponent final : public IComponentStorageInterface,
                            public IComponentValuesInterface,
                            public IConfigSimpleAccessInterface,
                            public IPhonebookInterface,
                            public IConnectionInterface,
                            public IServerInterface,
                            public IServerSimpleAccessInterface,
                            public ITDDOptionsInterface,
                            public IComplexValueInterface,
                            public IComplexValueFactoryInterface,
                            public IComplexComponentInterface {
  public:
    long QueryInterface(const GUID &iid, void **out) override {
        const auto is = [&iid](const GUID &other) { return std::memcmp(&iid, &other, sizeof iid) == 0; };
        *out = is(IID_IComponentStorageInterface)      ? static_cast<IComponentStorageInterface *>(this)
               : is(IID_IComponentValuesInterface)     ? static_cast<IComponentValuesInterface *>(this)
               : is(IID_IConfigSimpleAccessInterface)  ? static_cast<IConfigSimpleAccessInterface *>(this)
               : is(IID_IPhonebookInterface)           ? static_cast<IPhonebookInterface *>(this)
               : is(IID_ConnectionInterface)           ? static_cast<IConnectionInterface *>(this)
               : is(IID_IServerInterface)              ? static_cast<IServerInterface *>(this)
               : is(IID_IServerSimpleAccessInterface)  ? static_cast<IServerSimpleAccessInterface *>(this)
               : is(IID_ITDDOptionsInterface)          ? static_cast<ITDDOptionsInterface *>(this)
               : is(IID_IComplexValueFactoryInterface) ? static_cast<IComplexValueFactoryInterface *>(this)
                                                       : static_cast<void *>(nullptr);
        if (*out) ++references;
        return *out ? 0 : E_NOINTERFACE;
    }
    unsigned long AddRef() override { return ++references; }
    unsigned long Release() override { return --references; }

    long Open_Component(ComponentLocator *, long) override { return 0; }
    long Set_Edit_Lock(long, long) override { return 0; }
    long Commit_Component() override { return 0; }
    long Run_Component_Command(long, char *, char *, long, long) override { return 0; }
    long Set_Value(unsigned long, char *data, long length) override {
        std::memcpy(stored, data, static_cast<std::size_t>(length));
        return 0;
    }
    long Get_Value(unsigned long code, char *buffer, long) override {
        const bool is_number = code == Option_First_Number.code || code == Option_Second_Number.code;
        std::strcpy(buffer, is_number                          ? "+1 (206) 555-1212"
                            : code == Option_Modem_Device.code ? "Modem"
                                                               : "Home");
        return 0;
    }
    long Open_By_Name(char *) override { return 0; }
    long Read_Setting(unsigned long, char *buffer, long *size) override {
        std::strcpy(buffer, "Home");
        *size = sizeof "Home";
        return 0;
    }
    long Use_Method(char *) override { return 0; }
    bool Is_Dialup() override { return is_dialup; }
    void Get_Active_Config(char *out) override { *out = 0; }
    void Add_Status_Handler(IConnectionHandlerInterface *) override {}
    void Remove_Status_Handler(IConnectionHandlerInterface *) override {}
    void Get_Connected_Status_String(char *out) override { *out = 0; }
    long Connect(ConnectParams *, bool) override { return ++connected, 0; }
    void Close() override {}
    long Get_Monitor_Events(HANDLE *up, HANDLE *down) override {
        for (HANDLE *event : {up, down}) {
            if (event && !(*event = CreateEventA(nullptr, TRUE, FALSE, nullptr))) return E_OUTOFMEMORY;
        }
        return 0;
    }
    long Find_Component(long, char *, ComponentLocator *out) override { return out->present = 1, 0; }
    long Write_Setting(unsigned long, char *, long) override { return 0; }
    long Update_Setting(unsigned long, char *, long, long) override { return 0; }
    long Save_Options(unsigned long *token) override { return *token = 1, 0; }
    long Apply_Options(bool, bool, char *, char *) override { return 0; }
    long Restore_Options(unsigned long) override { return 0; }
    long Discard_Saved_Options(unsigned long) override { return 0; }
    char *Get_Text() override { return stored; }
    IComplexValueInterface *Find_Item(unsigned long, long) override { return ++references, this; }
    long Create_Tree(IComplexValueInterface **out) override {
        if (!Has_Memory()) return E_OUTOFMEMORY;
        *out = this;
        return ++references, 0;
    }
    long Fill_Tree(IComplexValueInterface *) override { return 0; }
    long Get_Component_Text(char *out) override {
        std::strcpy(out, "text");
        return 0;
    }

    unsigned long references = 0, connected = 0;
    bool is_dialup = true;
    char stored[64] = "555-1212";
};

inline FakeComponent *the_component;

inline HRESULT Create_Fake(REFCLSID, IUnknown *, DWORD, REFIID iid, void **out) {
    *out = nullptr;
    return Has_Memory() ? the_component->QueryInterface(iid, out) : E_OUTOFMEMORY;
}

/// Stands for them while it lives, and for telephony and remote access.
class FakeSuite {
  public:
    FakeSuite() {
        the_component = &component;
        RASDEVINFOA device = {};
        std::strcpy(device.szDeviceType, "isdn");
        std::strcpy(device.szDeviceName, "Adapter");
        services = {};
        services.locations = {"Home"};
        services.lines = {FakeLine{"Line"}};
        services.devices = {device};
        services.dialable = services.displayable = "5551212";
    }
    FakeComponent component;

  private:
    const ServicesInPlace in_place_;
    const ReplacedImport create_{"libkelmara.so", "CoCreateInstance", reinterpret_cast<void *>(Create_Fake)};
};
