#include <tests/faults/operations/operation.h>

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
    CRegMaster registry;
};

LONG Subkey_At(HKEY key, DWORD index, char (&name)[64]) {
    DWORD size = sizeof name;
    return RegEnumKeyExA(key, index, name, &size, nullptr, nullptr, nullptr, nullptr);
}

/// All that is in both keys, not by way of the object.
std::string Shown(HKEY parent, const char *name) {
    HKEY key;
    std::string shown;
    if (RegOpenKeyExA(parent, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return "none";
    char text[64];
    BYTE data[64];
    for (DWORD i = 0, size = sizeof text, bytes = sizeof data;
         RegEnumValueA(key, i, text, &size, nullptr, nullptr, data, &bytes) == ERROR_SUCCESS;
         ++i, size = sizeof text, bytes = sizeof data) {
        shown += std::string(text) + "=" + std::string(reinterpret_cast<char *>(data), bytes) + ";";
    }
    for (DWORD i = 0; Subkey_At(key, i, text) == ERROR_SUCCESS; ++i)
        shown += std::string("[") + text + ":" + Shown(key, text) + "]";
    RegCloseKey(key);
    return shown;
}

std::string Key_State(Key &) {
    return Shown(HKEY_CURRENT_USER, "Faults") + Shown(HKEY_CURRENT_USER, "Faults copy");
}

template <class Operate>
Operation On_Key(const char *name, long done, Operate operate, Leaves leaves = Leaves::Before) {
    return Row(
        name, done, {Gives_Nothing}, [] { return std::make_shared<Key>(); },
        [=](Key &of) { return operate(of.registry); }, Key_State, leaves);
}

} // namespace

Operations Registry_Operations() {
    return {
        On_Key("OpenKey", 1, [](CRegMaster &of) { return of.OpenKey(HKEY_CURRENT_USER, "Faults\\sub"); }),
        On_Key("CreateKey", 1, [](CRegMaster &of) { return of.CreateKey(HKEY_CURRENT_USER, "Faults\\new"); }),
        On_Key(
            "OpenSubkey", 1, [](CRegMaster &of) { return of.OpenSubkey("sub"); }, Leaves::Partly),
        On_Key(
            "OpenSubkey by index", 1, [](CRegMaster &of) { return of.OpenSubkey(0); }, Leaves::Partly),
        On_Key("CreateSubkey", 1, [](CRegMaster &of) { return of.CreateSubkey("newer"); }),
        On_Key(
            "SetRegEntry", 1, [](CRegMaster &of) { return of.SetRegEntry("text", "after"); }, Leaves::Either),
        On_Key("DeleteRegEntry", 1, [](CRegMaster &of) { return of.DeleteRegEntry("text"); }),
        On_Key(
            "IncrDword", 6, [](CRegMaster &of) { return of.IncrDword("number"); }, Leaves::Partly),
        On_Key("HasDefaultValue", 0, [](CRegMaster &of) { return of.HasDefaultValue(); }),
        On_Key("DeleteSubKey", 1, [](CRegMaster &of) { return of.DeleteSubKey("sub"); }),
        On_Key(
            "ZeroOutKey", 1, [](CRegMaster &of) { return of.ZeroOutKey(); }, Leaves::Partly),
        On_Key(
            "RenameSubkey", 1, [](CRegMaster &of) { return of.RenameSubkey("sub", "other"); },
            Leaves::Partly), // "so does what was copied"
        Row(
            "CopyKey", 1, {Gives_Nothing}, [] { return std::make_shared<Key>(); },
            [](Key &of) { return of.Copy(); }, Key_State, Leaves::Partly),
    };
}
