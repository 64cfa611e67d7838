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

long Called(const std::string &name, const std::string &arguments) {
    fakes.calls.push_back(name + " " + arguments);
    return Told(name);
}

// An object with all interfaces, under the name that its end is told by.
class Fake final : public IComponentStorageInterface,
                   public IComponentValuesInterface,
                   public ITDDOptionsInterface,
                   public IComplexValueFactoryInterface,
                   public IComplexValueInterface {
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
    long Set_Edit_Lock(long, long) override { return E_NOTIMPL; }
    long Commit_Component() override { return E_NOTIMPL; }
    long Run_Component_Command(long, char *, char *, long, long) override { return E_NOTIMPL; }
    long Set_Value(unsigned long, char *, long) override { return E_NOTIMPL; }
    // Leaves no terminator where there is no room for one.
    long Get_Value(unsigned long code, char *buffer, long size) override {
        const std::string &text = fakes.values[code];
        std::memcpy(buffer, text.c_str(), std::min(text.size() + 1, static_cast<std::size_t>(size)));
        return Called("Get", std::to_string(size));
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
        Fake *const made = new Fake(name_);
        const HRESULT result = made->QueryInterface(iid, out);
        made->Release();
        return result;
    }

  private:
    const char *name_;
};

Factory locations{"location"}, connections{"connection"};

} // namespace

extern "C" __attribute__((visibility("default"))) FakeComponents *Fakes() {
    return &fakes;
}

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid,
                                                                            void **out) {
    return (IsEqualGUID(clsid, CLSID_LocationComponent) ? locations : connections).QueryInterface(iid, out);
}
