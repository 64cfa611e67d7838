#include <kelmara/system/reg_master.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/system/key_copy.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr int Path_Buffer_Size = 256;

} // namespace

CRegMaster::CRegMaster() = default;

CRegMaster::CRegMaster(const CRegMaster &other)
    : CAutoDeleteableObject(other), m_ClearStringTail(other.m_ClearStringTail) {
    Open_As(other);
}

CRegMaster &CRegMaster::operator=(const CRegMaster &other) {
    if (this == &other) return *this;
    Close_All();
    m_ClearStringTail = other.m_ClearStringTail;
    Open_As(other);
    return *this;
}

CRegMaster::~CRegMaster() {
    Close_All();
}

void CRegMaster::Open_As(const CRegMaster &other) {
    m_RootKey = other.m_RootKey;
    if (!other.m_CurrentKey) return;
    CDSList &paths = const_cast<CDSList &>(other.m_PathStack);
    for (long level = paths.Entries(0) - 1; level >= 0; --level) {
        if (!Push_Path(static_cast<char *>(paths.GetEntry(level, 0)))) return Close_All();
    }
    if (Open_Existing_Key(other.m_CurrentKey, nullptr, &m_CurrentKey) != ERROR_SUCCESS) Close_All();
}

void CRegMaster::Close_Current_Key() {
    if (m_CurrentKey) RegCloseKey(m_CurrentKey);
    m_CurrentKey = nullptr;
}

void CRegMaster::Close_All() {
    m_PathStack.DeleteAllEntriesAsPointers(0);
    Close_Current_Key();
}

bool CRegMaster::OpenKey(HKEY root, const char *path) {
    return Open_From_Root(root, path, Open_Existing_Key);
}

bool CRegMaster::CreateKey(HKEY root, const char *path) {
    return Open_From_Root(root, path, Open_Or_Make_Key);
}

// The path goes onto the stack first: where there is no memory for it, no key is made.
bool CRegMaster::Open_From_Root(HKEY root, const char *path, Opener open) {
    Close_All();
    if (path && !Push_Path(path)) return false;
    HKEY key = nullptr;
    if (open(root, path, &key) != ERROR_SUCCESS) {
        Close_All();
        return false;
    }
    m_CurrentKey = key;
    m_RootKey = root;
    return true;
}

bool CRegMaster::OpenSubkey(const char *name) {
    return Go_Down(name, Open_Existing_Key);
}

bool CRegMaster::OpenSubkey(int index) {
    char name[Name_Buffer_Size] = {};
    GetSubkey(static_cast<unsigned long>(index), name);
    return *name && OpenSubkey(name);
}

bool CRegMaster::CreateSubkey(const char *name) {
    return Go_Down(name, Open_Or_Make_Key);
}

bool CRegMaster::Go_Down(const char *name, Opener open) {
    char path[Path_Buffer_Size];
    if (!m_CurrentKey || !name || !Compose_Path(name, path) || !Push_Path(path)) return false;
    HKEY key = nullptr;
    if (open(m_CurrentKey, name, &key) != ERROR_SUCCESS) {
        Pop_Path();
        return false;
    }
    Close_Current_Key();
    m_CurrentKey = key;
    return true;
}

// Without a path of the level above there is nothing in front of the name: a path that begins with a
// backslash cannot be opened.
bool CRegMaster::Compose_Path(const char *name, char *path) {
    const char *const head = static_cast<char *>(m_PathStack.GetEntry(0, 0));
    const int length = head && *head ? std::snprintf(path, Path_Buffer_Size, "%s\\%s", head, name)
                                     : std::snprintf(path, Path_Buffer_Size, "%s", name);
    return length >= 0 && length < Path_Buffer_Size;
}

bool CRegMaster::Push_Path(const char *path) {
    try {
        return m_PathStack.PushCString(path, 0);
    } catch (...) {
        return false;
    }
}

void CRegMaster::Pop_Path() {
    void *const path = m_PathStack.Pop(0);
    if (path) ds_free(path);
}

bool CRegMaster::CloseSubkey() {
    if (!m_CurrentKey) return false;
    Pop_Path();
    Close_Current_Key();
    if (m_PathStack.Entries(0) == 0) return true;
    const char *const path = static_cast<char *>(m_PathStack.GetEntry(0, 0));
    HKEY key = nullptr;
    if (Open_Existing_Key(m_RootKey, path, &key) != ERROR_SUCCESS) return false;
    m_CurrentKey = key;
    return true;
}

HKEY CRegMaster::GetKey() {
    return m_CurrentKey;
}
