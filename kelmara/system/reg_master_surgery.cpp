#include <kelmara/system/reg_master.h>

#include <kelmara/system/key_copy.h>

namespace {

// As the registry takes letters for the same, in code page 1252.
unsigned char Capital(unsigned char letter) {
    const bool plain = letter >= 'a' && letter <= 'z';
    const bool accented = letter >= 0xE0 && letter <= 0xFE && letter != 0xF7;
    if (plain || accented) return static_cast<unsigned char>(letter - 0x20);
    if (letter == 0x9A || letter == 0x9C || letter == 0x9E) return static_cast<unsigned char>(letter - 0x10);
    return letter == 0xFF ? 0x9F : letter;
}

// Past a run of backslashes; one at the end of a path means nothing.
const char *Past_Separators(const char *path) {
    while (*path == '\\') ++path;
    return path;
}

enum class PathRelation { Other, Same, Below };

// What `path` is, seen from `other`.
PathRelation Relation_Of(const char *path, const char *other) {
    for (;; ++path, ++other) {
        if (*path == '\\' || *other == '\\') {
            const bool both_end_here = (*path == '\\' || !*path) && (*other == '\\' || !*other);
            if (!both_end_here) return PathRelation::Other;
            path = Past_Separators(path);
            other = Past_Separators(other);
            if (*path && !*other) return PathRelation::Below;
        }
        if (Capital(static_cast<unsigned char>(*path)) != Capital(static_cast<unsigned char>(*other))) {
            return PathRelation::Other;
        }
        if (!*path) return PathRelation::Same;
    }
}

} // namespace

bool CRegMaster::DeleteSubKey(const char *name) {
    return m_CurrentKey && name && *name && RegDeleteKeyA(m_CurrentKey, name) == ERROR_SUCCESS;
}

bool CRegMaster::ZeroOutKey() {
    if (!m_CurrentKey) return false;
    char name[Name_Buffer_Size];
    unsigned long count = 0;
    if (GetNumSubkeys(&count) != ERROR_SUCCESS) return false;
    while (count-- > 0) {
        if (!GetSubkey(count, name) || RegDeleteKeyA(m_CurrentKey, name) != ERROR_SUCCESS) return false;
    }
    count = 0;
    if (GetNumValues(&count) != ERROR_SUCCESS) return false;
    while (count-- > 0) {
        if (!GetNextValue(count, name) || RegDeleteValueA(m_CurrentKey, name) != ERROR_SUCCESS) return false;
    }
    return true;
}

bool CRegMaster::CopyKey(HKEY source, HKEY target) {
    return Copy_Below_Key(source, target) != KeyCopyResult::Failed;
}

bool CRegMaster::RenameSubkey(const char *oldName, const char *newName) {
    if (!m_CurrentKey || !oldName || !newName || !*oldName || !*newName) return false;
    const PathRelation relation = Relation_Of(newName, oldName);
    if (relation == PathRelation::Below) return false;
    {
        OpenedKey from, to;
        if (Open_Existing_Key(m_CurrentKey, oldName, from.Place()) != ERROR_SUCCESS) return false;
        if (relation == PathRelation::Same) return true;
        if (Open_Or_Make_Key(m_CurrentKey, newName, to.Place()) != ERROR_SUCCESS) return false;
        if (Copy_Below_Key(from, to) != KeyCopyResult::Whole) return false;
    }
    RegDeleteKeyA(m_CurrentKey, oldName);
    return true;
}
