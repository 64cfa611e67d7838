#pragma once
// The registry, one open key at a time, with a way down into subkeys and back up as on a stack.
//
//     CRegMaster registry;
//     if (!registry.OpenKey(HKEY_LOCAL_MACHINE, "Software\\Dunmerit Software\\KelMara")) return;
//     registry.SetRegEntry("Runs", 1);
//     if (registry.OpenSubkey("Log")) registry.CloseSubkey(); // on the first key again
//
// The object owns the key it has open and closes it; the root that it was opened from stays the caller's and
// must stay open for CloseSubkey, which opens the level above anew. A copy opens the same key for itself,
// with a way back up of its own; where that fails it has no key open. The paths stand in a list: all objects
// of a process, and all lists (list.h), are for one thread at a time.
//
// Operations that answer `bool` say false for every failure and, unless their comment says otherwise, without
// an open key. Those that answer `long` give a code of errors.h, and 0 without an open key; their outputs are
// written only when the machine answered, so preset them or ask GetKey first. An output may be null. Nothing
// throws but the making of an object, for which the first list of a process may find no memory (list.h).
// Names of keys may be paths. A null name is no key; of values, null and empty name the default value. Names
// are enumerated up to 255 characters: a buffer for one has 256 bytes.

#include <kelmara/containers/list.h>
#include <kelmara/foundation/auto_deleteable_object.h>

#include <platform/registry.h>

#include <concepts>

class KELMARA_API CRegMaster : public CAutoDeleteableObject {
  public:
    /// No key open.
    CRegMaster();
    CRegMaster(const CRegMaster &other);
    CRegMaster &operator=(const CRegMaster &other);
    ~CRegMaster() override;

    /// Opens `path` below `root` in place of what was open, which is closed first and gone also on failure. A
    /// null path is `root` itself. CreateKey makes what is missing of the path.
    bool OpenKey(HKEY root, const char *path);
    bool CreateKey(HKEY root, const char *path);

    /// Goes one level down; on failure the object stays as it was. Refused also when the path from the root
    /// would have more than 255 characters or there is no memory for it: CreateSubkey then makes nothing.
    /// Below a key that was opened without a path, the name alone is the way from the root, and the way back
    /// up ends there.
    bool OpenSubkey(const char *name);
    bool OpenSubkey(int index);
    bool CreateSubkey(const char *name);

    /// Goes one level up, by opening that level anew from the root. The level that OpenKey opened counts:
    /// true and no key open. False when no key was open, or when the level above cannot be opened: then none
    /// is.
    bool CloseSubkey();

    /// Null: none is open. The key stays the object's.
    HKEY GetKey();

    /// Reads the bytes of a value, whatever its type. `*size` in: the buffer's size; out: the bytes read, 0
    /// when the read fails; without an open key it stays. Without a size the buffer has 256 bytes. False also
    /// for a value larger than the buffer, which then stays as it was. A null buffer asks for the size.
    bool GetRegEntry(const char *name, char *buffer);
    bool GetRegEntry(const char *name, char *buffer, unsigned long size);
    bool GetRegEntry(const char *name, char *buffer, unsigned long *size);
    /// At most 4 bytes, whatever the type; of a shorter value the other bytes stay as they were.
    bool GetRegEntry(const char *name, long *value);
    bool RegEntryExists(const char *name);

    /// Sets a value and returns when it is on the disk, as far as that is to be had. In this order: a string
    /// with its terminator; `size` bytes of string, of binary data; a number of 4 bytes; any type. False also
    /// for a null string.
    bool SetRegEntry(const char *name, const char *value);
    bool SetRegEntry(const char *name, const char *data, unsigned long size);
    bool SetRegEntry(const char *name, const long *data, unsigned long size);
    bool SetRegEntry(const char *name, long value);
    bool SetRegEntry(int type, const char *name, const char *data, unsigned long size);
    /// Any other number, a literal 0 too, is a number and no string.
    template <std::integral Number>
    requires(sizeof(Number) <= sizeof(long)) bool SetRegEntry(const char *name, Number value) {
        return SetRegEntry(name, static_cast<long>(value));
    }
    bool DeleteRegEntry(const char *name);

    /// Adds 1 to a number and gives the new one; 0 on failure, and where it wraps. What is missing, has
    /// another type or more than 4 bytes counts as 0 and becomes a REG_DWORD. Neither this nor DecrDword is
    /// atomic or waits for the disk.
    unsigned long IncrDword(const char *name);
    /// Takes 1 from a REG_DWORD, read as a number without sign, and gives the new one; 0 stays 0. -1 on
    /// failure, and nothing is written for what is missing or has another type.
    long DecrDword(const char *name);

    /// The default value as text. `*size` in: the buffer's size; out: what the text takes with its
    /// terminator.
    bool GetDefaultValue(void *buffer, unsigned long *size);
    /// Whether there is one of at least a character, and of at most 260.
    bool HasDefaultValue();
    /// Whether that is all the key has in values.
    bool OnlyHasDefaultValue();

    /// The name, or the data, at an index counted from 0. `name` has 256 bytes. `*size` as in GetRegEntry,
    /// but what a failure leaves is the machine's.
    bool GetSubkey(unsigned long index, char *name);
    bool GetNextValue(unsigned long index, char *name);
    bool GetNextValueData(unsigned long index, unsigned long *type, void *data, unsigned long *size);

    /// Counts, longest names in characters, longest data in bytes. Lengths of names on a remote key are twice
    /// what it reports and 1.
    long GetNumSubkeys(unsigned long *count);
    long GetNumValues(unsigned long *count);
    long GetMaxValueLen(unsigned long *length);
    long GetMaxValueNameLen(unsigned long *length);
    /// 0 on failure.
    unsigned long GetMaxSubkeyLen();
    long GetSubkeyInfo(unsigned long *count, unsigned long *maxNameLen);
    long GetValueInfo(unsigned long *count, unsigned long *maxNameLen, unsigned long *maxValueLen);
    /// Whether the open key lies on another machine, which the lowest bit of its handle tells. The predefined
    /// ones are local.
    bool IsKeyRemote();

    /// False for a key that has subkeys, and for an empty name, which would be the open key itself.
    bool DeleteSubKey(const char *name);
    /// Deletes subkeys, then values, from the last to the first. Subkeys with subkeys of their own cannot be
    /// deleted, nor can values whose names are longer than 255 characters. The first failure ends it, with
    /// the rest left in place.
    bool ZeroOutKey();
    /// Copies values and, with theirs, subkeys; what stands in `target` alone stays. The keys stay the
    /// caller's; the open key of the object plays no part. A value of any size and name is copied. One that
    /// cannot be is passed over, with the result still true. No subkey is made before the names of all are
    /// had. False when a key cannot be listed, opened or made, when there is no memory for the names of all
    /// subkeys, and for more than 512 levels. The subkeys are those at the start: a copy into a subkey of the
    /// source ends.
    bool CopyKey(HKEY source, HKEY target);
    /// Copies a subkey to a new name, over what is there, and deletes it, but for one with subkeys. False
    /// without a full copy, values included: the old key then stays, and so does what was copied. False and
    /// nothing done for an empty name and for a new one below the old. The same name in other letter case
    /// changes nothing and is true.
    bool RenameSubkey(const char *oldName, const char *newName);

    /// Whether this machine has "winreg.dll".
    bool IsRemoteClient();
    /// Whether the user's policy forbids tools that edit the registry. If so the user is told, by each call.
    bool IsEditingDisabled();
    /// Whether HKEY_LOCAL_MACHINE has several configurations, and whether HKEY_USERS has several users. False
    /// when that cannot be read.
    bool IsMultiConfig();
    bool IsMultiUser();

  private:
    friend struct RegMasterLayout;
    using Opener = LONG (*)(HKEY parent, LPCSTR path, HKEY *key);

    KELMARA_INTERNAL bool Open_From_Root(HKEY root, const char *path, Opener open);
    KELMARA_INTERNAL bool Go_Down(const char *name, Opener open);
    KELMARA_INTERNAL bool Compose_Path(const char *name, char *path);
    KELMARA_INTERNAL bool Push_Path(const char *path);
    KELMARA_INTERNAL void Pop_Path();
    KELMARA_INTERNAL void Close_Current_Key();
    KELMARA_INTERNAL void Close_All();
    KELMARA_INTERNAL void Open_As(const CRegMaster &other);
    KELMARA_INTERNAL bool Write(DWORD type, const char *name, const void *data, unsigned long size);
    KELMARA_INTERNAL unsigned long Name_Length(unsigned long reported);

    HKEY m_CurrentKey = nullptr; // offset 4
    HKEY m_RootKey = nullptr;    // offset 8, borrowed
    CDSList m_PathStack; // offset 12, ds_malloc copies of paths from the root, the deepest at the head

  public:
    /// Whether GetRegEntry clears the buffer behind the string that it read.
    bool m_ClearStringTail = false; // offset 52
};
static_assert(sizeof(CRegMaster) == 56);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // plain fields behind one table pointer
struct RegMasterLayout {
    static_assert(offsetof(CRegMaster, m_CurrentKey) == 4 && offsetof(CRegMaster, m_RootKey) == 8);
    static_assert(offsetof(CRegMaster, m_PathStack) == 12 && offsetof(CRegMaster, m_ClearStringTail) == 52);
};
#pragma GCC diagnostic pop
