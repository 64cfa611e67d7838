#include <tests/faults/operations/operation.h>
#include <tests/support/registry_verbs.h>

#include <kelmara/system/reg_master.h>

#include <platform/machine.h>

namespace {

void Fill(const char *root) {
    CRegMaster registry;
    registry.CreateKey(HKEY_CURRENT_USER, root);
    registry.SetRegEntry("text", "before");
    registry.SetRegEntry("number", 5);
    registry.CreateSubkey("sub");
    registry.SetRegEntry("in it", "kept");
    registry.SetRegEntry("too", "kept");
}

std::string Open_In(CRegMaster &registry) {
    char path[100] = "none";
    DWORD size = sizeof path;
    if (registry.GetKey()) Registry_Key_Path(registry.GetKey(), path, &size);
    return path;
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
    std::string State() { return "open=" + Open_In(registry) + "|" + All_Below(TestKey("")); }
    CRegMaster registry;
    char text[260];
    unsigned long number = sizeof text;
};

struct InSubkey : Key {
    InSubkey() { registry.OpenSubkey("sub"); }
};

/// Where the old key is gone only for a whole new one.
struct Renaming : Key {
    bool Rename() { return renamed = registry.RenameSubkey("sub", "other"); }
    std::string State() {
        const std::string whole = All_Below(TestKey(renamed ? "Faults\\other" : "Faults\\sub"));
        return Key::State() + "lost=" + (whole == Whole ? "nothing" : whole);
    }
    const std::string Whole = All_Below(TestKey("Faults\\sub"));
    bool renamed = false;
};

/// What becomes a copy of it, with a way back up.
struct Copied : Key {
    Copied() { registry.OpenSubkey("sub"), copy.OpenKey(HKEY_CURRENT_USER, "Faults"); }
    std::string State() {
        CRegMaster up(copy);
        up.CloseSubkey();
        return Key::State() + "copy=" + Open_In(copy) + " below " + Open_In(up) + "|";
    }
    bool Copy_Twice() {
        CRegMaster other(registry);
        copy = registry;
        return other.GetKey() && copy.GetKey();
    }
    CRegMaster copy;
};

const Leaves None_Open = Or(Before, {"open=none"});

template <class Subject = Key, class Operate>
Operation On_Key(const char *name, long done, Operate operate, const Leaves &leaves = Before) {
    return Row<Subject>(name, done, {Nothing}, leaves, [=](Subject &of) { return operate(of.registry); });
}

template <class Operate>
Operation Asking(const char *name, long done, Operate operate) {
    return Row<Key>(name, done, {Nothing}, operate);
}

} // namespace

Operations Registry_Operations() {
    return {
        On_Key(
            "OpenKey", 1, [](auto &of) { return of.OpenKey(HKEY_CURRENT_USER, "Faults\\sub"); }, None_Open),
        On_Key(
            "CreateKey", 1, [](auto &of) { return of.CreateKey(HKEY_CURRENT_USER, "Faults\\new"); },
            None_Open),
        On_Key("OpenSubkey", 1, [](auto &of) { return of.OpenSubkey("sub"); }),
        On_Key("OpenSubkey by index", 1, [](auto &of) { return of.OpenSubkey(0); }),
        On_Key("CreateSubkey", 1, [](auto &of) { return of.CreateSubkey("newer"); }),
        On_Key(
            "SetRegEntry", 1, [](auto &of) { return of.SetRegEntry("text", "after"); }, Either),
        On_Key("DeleteRegEntry", 1, [](auto &of) { return of.DeleteRegEntry("text"); }),
        On_Key("IncrDword", 6, [](auto &of) { return of.IncrDword("number"); }),
        On_Key("HasDefaultValue", 0, [](auto &of) { return of.HasDefaultValue(); }),
        On_Key("DeleteSubKey", 1, [](auto &of) { return of.DeleteSubKey("sub"); }),
        On_Key(
            "ZeroOutKey", 1, [](auto &of) { return of.ZeroOutKey(); }, Partly),
        // "and so does what was copied"
        Row<Renaming>("RenameSubkey", 1, {Nothing}, Partly, [](auto &of) { return of.Rename(); }),
        On_Key<InSubkey>(
            "CloseSubkey", 1, [](auto &of) { return of.CloseSubkey(); }, Once(None_Open)),
        // "One that cannot be is passed over, with the result still true"
        Row<Key>("CopyKey", 1, {Nothing}, Partly_Untold, [](auto &of) { return of.Copy(); }),
        Row<Copied>("copies of a registry object", 1, {Minus_One, Thrown, Nothing},
                    Or(Before, {"copy=none below none"}),
                    [](auto &of) { return of.Copy_Twice(); }), // "where that fails it has no key open"
        // "for which the first list of a process may find no memory"
        Row<Made<CRegMaster>>("registry object", 0, Throws, [](auto &of) { of.thing.emplace(); }),
        On_Key(
            "SetRegEntry of a number", 1, [](auto &of) { return of.SetRegEntry("number", 6); }, Either),
        On_Key("DecrDword", 4, [](auto &of) { return of.DecrDword("number"); }),
        Asking("GetRegEntry", 1, [](auto &of) { return of.registry.GetRegEntry("text", of.text); }),
        Asking("RegEntryExists", 1, [](auto &of) { return of.registry.RegEntryExists("text"); }),
        Asking("OnlyHasDefaultValue", 0, [](auto &of) { return of.registry.OnlyHasDefaultValue(); }),
        Asking("GetSubkey", 1, [](auto &of) { return of.registry.GetSubkey(0, of.text); }),
        Asking("GetNextValue", 1, [](auto &of) { return of.registry.GetNextValue(0, of.text); }),
        Asking("GetNextValueData", 1,
               [](auto &of) {
                   return of.registry.GetNextValueData(0, nullptr, of.text, &(of.number = sizeof of.text));
               }),
        Row<Key>("IsRemoteClient", 1, {Nothing}, [](auto &of) { return of.registry.IsRemoteClient(); }),
        Asking("GetMaxSubkeyLen", 3, [](auto &of) { return of.registry.GetMaxSubkeyLen(); }),
    };
}
