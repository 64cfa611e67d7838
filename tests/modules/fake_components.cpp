// Components that answer what the test has told them to, and tell what they were asked.

#include <tests/modules/fake_components.h>

#include <kelmara/connectivity/component_interfaces.h>

#include <algorithm>
#include <cstring>

namespace {

FakeComponents fakes;

long Called(const std::string &name, const std::string &arguments = {}) {
    fakes.calls.push_back(arguments.empty() ? name : name + " " + arguments);
    const auto told = fakes.answers.find(name);
    return told == fakes.answers.end() ? 0 : told->second;
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
        const struct {
            GUID iid;
            const char *name;
            void *object;
        } interfaces[] = {
            {IID_IComponentStorageInterface, "Storage", static_cast<IComponentStorageInterface *>(this)},
            {IID_IComponentValuesInterface, "Values", static_cast<IComponentValuesInterface *>(this)},
            {IID_ITDDOptionsInterface, "Options", static_cast<ITDDOptionsInterface *>(this)},
            {IID_IComplexValueFactoryInterface, "Factory",
             static_cast<IComplexValueFactoryInterface *>(this)},
        };
        for (const auto &offered : interfaces) {
            if (!IsEqualGUID(iid, offered.iid)) continue;
            const auto told = fakes.answers.find(std::string("Query ") + offered.name);
            const long result = told == fakes.answers.end() ? 0 : told->second;
            *out = result == 0 ? offered.object : nullptr;
            if (*out) AddRef();
            return result;
        }
        return E_NOINTERFACE;
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
        std::strncpy(expected.name, locator->name, sizeof expected.name);
        expected.kind = locator->kind;
        const bool clean = zero == 0 && std::memcmp(&expected, locator, sizeof expected) == 0;
        return Called("Open", std::string(locator->name) + " " + std::to_string(locator->kind) +
                                  (clean ? "" : " and more"));
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
                      std::to_string(second) + std::to_string(first) + " " + area_code + " " + exchange);
    }
    long Restore_Options(unsigned long token) override { return Called("Restore", std::to_string(token)); }
    long Discard_Saved_Options(unsigned long token) override {
        return Called("Discard", std::to_string(token));
    }

    long Create_Tree(IComplexValueInterface **out) override {
        *out = nullptr;
        const long result = Called("Create_Tree");
        if (result == 0) *out = new Fake("tree");
        return result;
    }
    char *Get_Text() override { return text_.data(); }
    IComplexValueInterface *Find_Item(unsigned long code, long zero) override {
        const auto item = fakes.values.find(code);
        return zero != 0 || item == fakes.values.end() ? nullptr : new Fake("item", item->second);
    }

  private:
    ~Fake() = default;

    const std::string name_;
    std::string text_;
    ULONG count_ = 1;
};

class Factory final : public IClassFactory {
  public:
    explicit Factory(const char *name) : name_(name) {}
    HRESULT QueryInterface(REFIID, void **out) override {
        *out = this;
        return S_OK;
    }
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

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT FakeComponents *Fakes() {
    return &fakes;
}

EXPORT HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void **out) {
    if (IsEqualGUID(clsid, CLSID_LocationComponent)) return locations.QueryInterface(iid, out);
    if (IsEqualGUID(clsid, CLSID_ConnectionComponent)) return connections.QueryInterface(iid, out);
    return CLASS_E_CLASSNOTAVAILABLE;
}
