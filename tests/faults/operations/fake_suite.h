#pragma once
// The suite's components, telephony and remote access as the library creates them and looks them up: one
// object for all, which fails only where there is no memory for it.

#include <kelmara/connectivity/component_interfaces.h>
#include <tests/support/replaced_import.h>

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
    long QueryInterface(const GUID &iid, void **out) override;
    unsigned long AddRef() override { return ++references; }
    unsigned long Release() override { return --references; }

    long Open_Component(ComponentLocator *, long) override { return 0; }
    long Set_Edit_Lock(long, long) override { return 0; }
    long Commit_Component() override { return 0; }
    long Run_Component_Command(long, char *, char *, long, long) override { return 0; }
    long Set_Value(unsigned long, char *data, long length) override;
    long Get_Value(unsigned long code, char *buffer, long size) override;
    long Open_By_Name(char *) override { return 0; }
    long Read_Setting(unsigned long code, char *buffer, long *size) override;
    long Use_Method(char *) override { return 0; }
    bool Is_Dialup() override { return is_dialup; }
    void Get_Active_Config(char *out) override { *out = 0; }
    void Add_Status_Handler(IConnectionHandlerInterface *) override {}
    void Remove_Status_Handler(IConnectionHandlerInterface *) override {}
    void Get_Connected_Status_String(char *out) override { *out = 0; }
    long Connect(ConnectParams *, bool) override { return ++connected, 0; }
    void Close() override {}
    long Get_Monitor_Events(HANDLE *connected, HANDLE *disconnected) override;
    long Find_Component(long, char *, ComponentLocator *out) override { return out->present = 1, 0; }
    long Write_Setting(unsigned long, char *, long) override { return 0; }
    long Update_Setting(unsigned long, char *, long, long) override { return 0; }
    long Save_Options(unsigned long *token) override { return *token = 1, 0; }
    long Apply_Options(bool, bool, char *, char *) override { return 0; }
    long Restore_Options(unsigned long) override { return 0; }
    long Discard_Saved_Options(unsigned long) override { return 0; }
    char *Get_Text() override { return stored; }
    IComplexValueInterface *Find_Item(unsigned long, long) override { return ++references, this; }
    long Create_Tree(IComplexValueInterface **out) override;
    long Fill_Tree(IComplexValueInterface *) override { return 0; }
    long Get_Component_Text(char *out) override;

    unsigned long references = 0, connected = 0;
    bool is_dialup = true;
    char stored[64] = "555-1212";
};

/// Stands for them while it lives.
class FakeSuite {
  public:
    FakeSuite();
    FakeComponent component;

  private:
    ReplacedImport create_, load_, find_;
};
