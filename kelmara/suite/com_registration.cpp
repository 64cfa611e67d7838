#include <kelmara/suite/com_registration.h>

#include <kelmara/foundation/conversions.h>
#include <kelmara/system/reg_master.h>

#include <platform/com.h>
#include <platform/kernel.h>

#include <cstdio>

namespace {

constexpr int Class_Text_Size = 39;
constexpr int Longest_Module_Path = 512;
constexpr int Name_Size = 256;
constexpr char Default_Value[] = "";

bool Has_Name(const char *key) {
    return key && *key;
}

// The class as text, and its key below HKEY_CLASSES_ROOT. Without memory it has neither: the key above all
// classes must not be taken for it.
class ClassText {
  public:
    explicit ClassText(_GUID const &clsid) {
        WCHAR *wide = nullptr;
        if (StringFromCLSID(clsid, &wide) != S_OK) return;
        UnicodeToAnsi(wide, m_Text, Class_Text_Size);
        CoTaskMemFree(wide);
        if (*m_Text) std::snprintf(m_Key, sizeof m_Key, "CLSID\\%s", m_Text);
    }
    const char *Text() const { return m_Text; }
    const char *Key() const { return m_Key; }

  private:
    char m_Text[Class_Text_Size] = {};
    char m_Key[Class_Text_Size + 6] = {};
};

// Null for one that cannot be told, as without memory: a path that is there already must not go for nothing.
class ModulePath {
  public:
    explicit ModulePath(HINSTANCE component) { GetModuleFileNameA(component, m_Path, sizeof m_Path); }
    operator const char *() const { return *m_Path ? m_Path : nullptr; }

  private:
    char m_Path[Longest_Module_Path + 1] = {};
};

void Add_Subkey(CRegMaster &registry, const char *key, const char *subkey, const char *text) {
    if (registry.OpenKey(HKEY_CLASSES_ROOT, key) && registry.CreateSubkey(subkey))
        registry.SetRegEntry(Default_Value, text);
}

void Enter_Module(CRegMaster &registry, const char *path) {
    if (!registry.CreateSubkey("InProcServer32")) return;
    registry.SetRegEntry(Default_Value, path);
    registry.SetRegEntry("ThreadingModel", "Apartment");
}

bool Enter_Identifier(CRegMaster &registry, const char *identifier, const char *friendly_name,
                      const char *class_text) {
    if (!Has_Name(identifier) || !registry.CreateKey(HKEY_CLASSES_ROOT, identifier)) return false;
    registry.SetRegEntry(Default_Value, friendly_name);
    registry.SetRegEntry("CLSID", class_text);
    return true;
}

class OpenKey {
  public:
    ~OpenKey() { Close(); }
    OpenKey() = default;
    OpenKey(const OpenKey &) = delete;
    OpenKey &operator=(const OpenKey &) = delete;

    long Open(HKEY parent, const char *name) { return RegOpenKeyExA(parent, name, 0, 0x1F, &m_Key); }
    HKEY Get() const { return m_Key; }
    void Take(OpenKey &other) {
        Close();
        m_Key = other.m_Key;
        other.m_Key = nullptr;
    }

  private:
    void Close() {
        if (m_Key) RegCloseKey(m_Key);
    }
    HKEY m_Key = nullptr;
};

bool First_Subkey(HKEY key, char *name) {
    DWORD size = Name_Size;
    return RegEnumKeyExA(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

// Goes down by first subkeys and deletes the last. `whole` says that this was the tree's own key.
long Delete_First_Leaf(HKEY parent, const char *name, bool &whole) {
    OpenKey above, key;
    if (const long error = key.Open(parent, name); error != ERROR_SUCCESS) return error;
    char leaf[Name_Size];
    for (whole = true; First_Subkey(key.Get(), leaf); whole = false) {
        above.Take(key);
        if (const long error = key.Open(above.Get(), leaf); error != ERROR_SUCCESS) return error;
        parent = above.Get();
        name = leaf;
    }
    return RegDeleteKeyA(parent, name);
}

// From the top again for each key, so that no depth of the tree is too much for the stack.
long Delete_Tree(HKEY parent, const char *name) {
    if (!Has_Name(name)) return ERROR_INVALID_PARAMETER;
    for (bool whole = false;;) {
        const long error = Delete_First_Leaf(parent, name, whole);
        if (error != ERROR_SUCCESS || whole) return error;
    }
}

void Enter_Class(HINSTANCE component, const ClassText &of_class, const char *friendly_name,
                 const char *version_independent_id, const char *program_id) {
    CRegMaster registry;
    if (registry.CreateKey(HKEY_CLASSES_ROOT, of_class.Key())) {
        registry.SetRegEntry(Default_Value, friendly_name);
        Enter_Module(registry, ModulePath(component));
    }
    Add_Subkey(registry, of_class.Key(), "ProgID", program_id);
    Add_Subkey(registry, of_class.Key(), "VersionIndependentProgID", version_independent_id);
    if (Enter_Identifier(registry, version_independent_id, friendly_name, of_class.Text()))
        registry.SetRegEntry("CurVer", program_id);
    Enter_Identifier(registry, program_id, friendly_name, of_class.Text());
}

void Enter_Verb(HINSTANCE component, const ClassText &of_class, const char *command, const char *verb) {
    CRegMaster registry;
    Add_Subkey(registry, of_class.Key(), "DefaultIcon", ModulePath(component));
    if (!registry.OpenKey(HKEY_CLASSES_ROOT, of_class.Key()) || !registry.CreateSubkey("shell\\open")) return;
    registry.SetRegEntry(Default_Value, verb);
    if (registry.CreateSubkey("command")) registry.SetRegEntry(Default_Value, command);
}

// The making of a registry object may find no memory.
template <class Step>
long Answer_0(Step step) {
    try {
        step();
    } catch (...) {
    }
    return 0;
}

} // namespace

long RegisterServer(HINSTANCE component, _GUID const &clsid, const char *friendly_name,
                    const char *version_independent_id, const char *program_id) {
    const ClassText of_class(clsid);
    if (!Has_Name(of_class.Key())) return 0;
    return Answer_0(
        [&] { Enter_Class(component, of_class, friendly_name, version_independent_id, program_id); });
}

long RegisterShellExtension(HINSTANCE component, _GUID const &clsid, const char *command_prefix,
                            const char *verb) {
    const ClassText of_class(clsid);
    if (!Has_Name(of_class.Key())) return 0;
    char command[256];
    std::snprintf(command, sizeof command, "%.214s%s,%%1", command_prefix ? command_prefix : "",
                  of_class.Text());
    return Answer_0([&] { Enter_Verb(component, of_class, command, verb); });
}

long UnregisterServer(_GUID const &clsid, const char *version_independent_id, const char *program_id) {
    Delete_Tree(HKEY_CLASSES_ROOT, ClassText(clsid).Key());
    Delete_Tree(HKEY_CLASSES_ROOT, version_independent_id);
    Delete_Tree(HKEY_CLASSES_ROOT, program_id);
    return 0;
}
