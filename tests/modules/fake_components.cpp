// Components that answer what the test has told them to, and tell what they were asked.

#include <tests/modules/fake_components.h>

#include <kelmara/connectivity/component_interfaces.h>

#include <algorithm>
#include <cstring>

namespace {

FakeComponents fakes;

long Told(const std::string &name) {
    const auto told = fakes.answers.find(name);
    return told == fakes.answers.end() ? 0 : told->second;
}

long Called(const std::string &name, const std::string &arguments = {}) {
    fakes.calls.push_back(arguments.empty() ? name : name + " " + arguments);
    if (fakes.throwing == name) throw 7;
    return Told(name);
}

std::string Spelled(unsigned long code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift);
    return text;
}

// Leaves no terminator where there is no room for one.
void Write_Value(unsigned long code, char *buffer, long size) {
    const std::string &text = fakes.values[code];
    if (!fakes.silent)
        std::memcpy(buffer, text.c_str(), std::min(text.size() + 1, static_cast<std::size_t>(size)));
}

// An object with all interfaces, under the name that its end is told by.
class Fake final : public IComponentStorageInterface,
                   public IComponentValuesInterface,
                   public ITDDOptionsInterface,
                   public IComplexValueFactoryInterface,
                   public IComplexValueInterface,
                   public IConnectionInterface,
                   public IPhonebookInterface,
                   public IConfigSimpleAccessInterface,
                   public IServerInterface,
                   public IServerSimpleAccessInterface {
  public:
    explicit Fake(std::string name, std::string text = {}) : name_(std::move(name)), text_(std::move(text)) {
        ++fakes.living;
    }
    HRESULT QueryInterface(REFIID iid, void **out) override {
        if (IsEqualGUID(iid, IID_IComponentStorageInterface))
            return Offer<IComponentStorageInterface>("Query Storage", out);
        if (IsEqualGUID(iid, IID_IComponentValuesInterface))
            return Offer<IComponentValuesInterface>("Query Values", out);
        if (IsEqualGUID(iid, IID_ITDDOptionsInterface))
            return Offer<ITDDOptionsInterface>("Query Options", out);
        if (IsEqualGUID(iid, IID_ConnectionInterface))
            return Offer<IConnectionInterface>("Query Connection", out);
        if (IsEqualGUID(iid, IID_IPhonebookInterface))
            return Offer<IPhonebookInterface>("Query Phonebook", out);
        if (IsEqualGUID(iid, IID_IConfigSimpleAccessInterface))
            return Offer<IConfigSimpleAccessInterface>("Query Access", out);
        if (IsEqualGUID(iid, IID_IServerInterface)) return Offer<IServerInterface>("Query Server", out);
        if (IsEqualGUID(iid, IID_IServerSimpleAccessInterface))
            return Offer<IServerSimpleAccessInterface>("Query Settings", out);
        return Offer<IComplexValueFactoryInterface>("Query Factory", out);
    }
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override {
        if (--count_ > 0) return count_;
        fakes.calls.push_back("end of " + name_);
        --fakes.living;
        delete this;
        return 0;
    }

    long Open_Component(ComponentLocator *locator, long zero) override {
        ComponentLocator expected = {};
        std::memcpy(expected.name, locator->name, strnlen(locator->name, sizeof expected.name));
        expected.kind = locator->kind;
        const bool clean = zero == 0 && std::memcmp(&expected, locator, sizeof expected) == 0;
        return Called("Open", locator->name + (" " + std::to_string(locator->kind)) + (clean ? "" : "!"));
    }
    long Set_Edit_Lock(long on, long zero) override {
        return Called(on ? "Lock" : "Unlock", zero ? "and more" : "");
    }
    long Commit_Component() override { return Called("Commit"); }
    long Run_Component_Command(long command, char *name, char *text, long zero, long zero_too) override {
        return Called("Run", std::to_string(command) + " " + name + " " + text +
                                 (zero || zero_too ? " and more" : ""));
    }
    long Set_Value(unsigned long code, char *data, long length) override {
        return Called("Set", Spelled(code) + " " + data + " " + std::to_string(length));
    }
    long Get_Value(unsigned long code, char *buffer, long size) override {
        Write_Value(code, buffer, size);
        return Called("Get", Spelled(code) + " " + std::to_string(size));
    }

    long Use_Method(char *method) override { return Called("Use_Method", method); }
    bool Is_Dialup() override { return Called("Is_Dialup") == 0 && fakes.dialup; }
    void Get_Active_Config(char *out) override { std::strcpy(out, fakes.active.c_str()); }
    void Add_Status_Handler(IConnectionHandlerInterface *) override {}
    void Remove_Status_Handler(IConnectionHandlerInterface *) override {}
    void Get_Connected_Status_String(char *) override {}
    long Connect(ConnectParams *params, bool flag) override {
        const std::string strings =
            params ? std::string(params->first_dial_string) + "|" + params->second_dial_string : "null";
        return Called("Connect", strings + "|" + std::to_string(flag));
    }
    void Close() override {}
    long Get_Monitor_Events(HANDLE *up, HANDLE *down) override {
        const long result = Called("Events", std::string(up ? "up" : "") + (down ? "down" : ""));
        if (up) *up = fakes.connected = fakes.make_event();
        if (down) *down = fakes.disconnected = fakes.make_event();
        return result;
    }

    long Open_By_Name(char *name) override { return Called("Open_By_Name", name); }
    // Of both simple accesses.
    long Read_Setting(unsigned long code, char *buffer, long *size) override {
        const long result = Called("Read", Spelled(code) + " " + std::to_string(*size));
        Write_Value(code, buffer, *size);
        *size = fakes.setting_size ? fakes.setting_size : static_cast<long>(fakes.values[code].size()) + 1;
        return result;
    }
    long Write_Setting(unsigned long code, char *text, long size) override {
        return Called("Write", Spelled(code) + " " + text + " " + std::to_string(size));
    }
    long Update_Setting(unsigned long code, char *text, long size, long zero) override {
        return Called("Update",
                      Spelled(code) + " " + text + " " + std::to_string(size) + (zero ? " and more" : ""));
    }
    long Find_Component(long kind, char *name, ComponentLocator *out) override {
        *out = fakes.found;
        return Called("Find", std::to_string(kind) + " " + name);
    }

    long Save_Options(unsigned long *token) override {
        *token = ++fakes.last_token;
        return Called("Save", std::to_string(*token));
    }
    long Apply_Options(bool second, bool first, char *area_code, char *exchange) override {
        return Called("Apply",
                      (second ? "1" : "0") + std::string(first ? "1 " : "0 ") + area_code + exchange);
    }
    long Restore_Options(unsigned long token) override { return Called("Restore", std::to_string(token)); }
    long Discard_Saved_Options(unsigned long token) override {
        return Called("Discard", std::to_string(token));
    }

    long Create_Tree(IComplexValueInterface **out) override {
        const long result = Told("Create_Tree");
        *out = result == 0 ? new Fake("tree") : nullptr;
        return result;
    }
    char *Get_Text() override { return text_.data(); }
    IComplexValueInterface *Find_Item(unsigned long code, long zero) override {
        const auto item = fakes.values.find(code);
        return zero != 0 || item == fakes.values.end() ? nullptr : new Fake("item", item->second);
    }

  private:
    ~Fake() = default;
    template <class Interface>
    HRESULT Offer(const char *name, void **out) {
        const long result = Told(name);
        *out = result == 0 ? static_cast<Interface *>(this) : nullptr;
        if (*out) AddRef();
        return result;
    }

    const std::string name_;
    std::string text_;
    ULONG count_ = 1;
};

class Factory final : public IClassFactory {
  public:
    explicit Factory(const char *name) : name_(name) {}
    HRESULT QueryInterface(REFIID, void **out) override { return *out = this, S_OK; }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }
    HRESULT CreateInstance(IUnknown *, REFIID iid, void **out) override {
        if (const long result = Called("Create", name_)) return result;
        if (const long result = Told(std::string("Create ") + name_)) return result;
        Fake *const made = new Fake(name_);
        const HRESULT result = made->QueryInterface(iid, out);
        made->Release();
        return result;
    }

  private:
    const char *name_;
};

Factory locations("location"), connections("connection"), configurations("configuration");
Factory phone_books("phone book"), servers("server");

const struct {
    GUID const &clsid;
    Factory &factory;
} classes[] = {{CLSID_LocationComponent, locations},
               {CLSID_ConnectionComponent, connections},
               {CLSID_ConfigurationComponent, configurations},
               {CLSID_PhonebookComponent, phone_books},
               {CLSID_SuiteServer, servers}};

} // namespace

extern "C" __attribute__((visibility("default"))) FakeComponents *Fakes() {
    return &fakes;
}

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid,
                                                                            void **out) {
    for (const auto &offered : classes)
        if (IsEqualGUID(clsid, offered.clsid)) return offered.factory.QueryInterface(iid, out);
    return CLASS_E_CLASSNOTAVAILABLE;
}
