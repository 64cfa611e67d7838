#include <tests/faults/operations/operation.h>
#include <tests/support/registry_verbs.h>

#include <kelmara/system/reg_master.h>

namespace {

void Fill(const char *root) {
    CRegMaster registry;
    registry.CreateKey(HKEY_CURRENT_USER, root);
    registry.SetRegEntry("text", "before");
    registry.SetRegEntry("number", 5);
    registry.CreateSubkey("sub");
    registry.SetRegEntry("in it", "kept");
}

/// All that is in it, not by way of the object.
std::string Shown(const TestKey &key) {
    std::string shown;
    for (const std::string &name : key.Values()) shown += name + "=" + key.Get(name) + ";";
    for (const std::string &name : key.Subkeys()) shown += "[" + name + ":" + Shown(TestKey(name, key)) + "]";
    return shown;
}

/// A key with a subkey, open.
struct Key {
    Key() {
        Fill("Faults");
        registry.OpenKey(HKEY_CURRENT_USER, "Faults");
    }
    ~Key() {
        for (const char *name : {"Faults", "Faults copy"}) {
            if (!registry.OpenKey(HKEY_CURRENT_USER, name)) continue;
            registry.ZeroOutKey();
            RegDeleteKeyA(HKEY_CURRENT_USER, name);
        }
    }
    bool Copy() {
        CRegMaster target;
        return target.CreateKey(HKEY_CURRENT_USER, "Faults copy") &&
               registry.CopyKey(registry.GetKey(), target.GetKey());
    }
    std::string State() const { return Shown(TestKey("")); }
    CRegMaster registry;
    char text[260];
    unsigned long number = sizeof text;
};

struct InSubkey : Key {
    InSubkey() { registry.OpenSubkey("sub"); }
};

template <class Subject = Key, class Operate>
Operation On_Key(const char *name, long done, Operate operate, Leaves leaves = Before) {
    return Row<Subject>(name, done, {Nothing}, leaves, [=](Subject &of) { return operate(of.registry); });
}

template <class Operate>
Operation Asking(const char *name, long done, Operate operate) {
    return Row<Key>(name, done, {Nothing}, operate);
}

} // namespace

Operations Registry_Operations() {
    return {
        On_Key("OpenKey", 1, [](auto &of) { return of.OpenKey(HKEY_CURRENT_USER, "Faults\\sub"); }),
        On_Key("CreateKey", 1, [](auto &of) { return of.CreateKey(HKEY_CURRENT_USER, "Faults\\new"); }),
        On_Key(
            "OpenSubkey", 1, [](auto &of) { return of.OpenSubkey("sub"); }, Partly),
        On_Key(
            "OpenSubkey by index", 1, [](auto &of) { return of.OpenSubkey(0); }, Partly),
        On_Key("CreateSubkey", 1, [](auto &of) { return of.CreateSubkey("newer"); }),
        On_Key(
            "SetRegEntry", 1, [](auto &of) { return of.SetRegEntry("text", "after"); }, Either),
        On_Key("DeleteRegEntry", 1, [](auto &of) { return of.DeleteRegEntry("text"); }),
        On_Key(
            "IncrDword", 6, [](auto &of) { return of.IncrDword("number"); }, Partly),
        On_Key("HasDefaultValue", 0, [](auto &of) { return of.HasDefaultValue(); }),
        On_Key("DeleteSubKey", 1, [](auto &of) { return of.DeleteSubKey("sub"); }),
        On_Key(
            "ZeroOutKey", 1, [](auto &of) { return of.ZeroOutKey(); }, Partly),
        On_Key(
            "RenameSubkey", 1, [](auto &of) { return of.RenameSubkey("sub", "other"); },
            Partly), // "so does what was copied"
        On_Key<InSubkey>(
            "CloseSubkey", 1, [](auto &of) { return of.CloseSubkey(); }, Partly),
        Row<Key>("CopyKey", 1, {Nothing}, Partly, [](auto &of) { return of.Copy(); }),
        // "for which the first list of a process may find no memory"
        Row<Made<CRegMaster>>("registry object", 0, Throws, [](auto &of) { of.thing.emplace(); }),
        On_Key(
            "SetRegEntry of a number", 1, [](auto &of) { return of.SetRegEntry("number", 6); }, Either),
        On_Key(
            "DecrDword", 4, [](auto &of) { return of.DecrDword("number"); }, Partly),
        Asking("GetRegEntry", 1, [](auto &of) { return of.registry.GetRegEntry("text", of.text); }),
        Asking("RegEntryExists", 1, [](auto &of) { return of.registry.RegEntryExists("text"); }),
        Asking("OnlyHasDefaultValue", 0, [](auto &of) { return of.registry.OnlyHasDefaultValue(); }),
        Asking("GetSubkey", 1, [](auto &of) { return of.registry.GetSubkey(0, of.text); }),
        Asking("GetNextValue", 1, [](auto &of) { return of.registry.GetNextValue(0, of.text); }),
        Asking("GetNextValueData", 1,
               [](auto &of) {
                   return of.registry.GetNextValueData(0, nullptr, of.text, &(of.number = sizeof of.text));
               }),
        Asking("GetMaxSubkeyLen", 3, [](auto &of) { return of.registry.GetMaxSubkeyLen(); }),
    };
}
