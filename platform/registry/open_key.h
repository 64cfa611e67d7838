#pragma once
// What a key handle stands for, and the way from the handle that a call is given to the key.

#include <platform/kernel/handle_table.h>
#include <platform/registry.h>
#include <platform/registry/store.h>

#include <new>

/// Opens a handle to the key of that machine with the rights that are asked for. A code of errors.h.
LONG Open_Key_Handle(std::uint32_t key, unsigned machine, DWORD access, HKEY *handle);

/// A handle that was looked up. Predefined roots have every right, on whatever machine the process is.
struct KeyReference {
    std::uint32_t key = No_Key; // No_Key: the handle is not that of an open key
    DWORD access = KEY_ALL_ACCESS;
    unsigned machine = 0; // 0: any
};
KeyReference Look_Up(HKEY handle);
bool Is_Predefined(HKEY handle);

/// The key itself in the registry of `Store`: Reading or Writing. A code of errors.h.
template <class Store>
LONG Find_Key(const Store &store, const KeyReference &reference, RegistryKey **key) {
    if (reference.machine != 0 && reference.machine != store.Machine()) return ERROR_INVALID_HANDLE;
    *key = store.Tree().Key(reference.key);
    return *key ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

/// Runs `call(store, key, reference)` on the key behind the handle if it was opened with the rights that are
/// needed; `Store` is RegistryStore's Reading or Writing. Memory that runs out becomes a code.
template <class Store, class Call>
LONG With_Key(HKEY handle, DWORD needed, Call call) {
    const KeyReference reference = Look_Up(handle);
    if (reference.key == No_Key) return ERROR_INVALID_HANDLE;
    if ((needed & ~reference.access) != 0) return ERROR_ACCESS_DENIED;
    try {
        Store store;
        if (const LONG error = store.Error()) return error;
        RegistryKey *key = nullptr;
        if (const LONG error = Find_Key(store, reference, &key)) return error;
        return call(store, *key);
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

/// The names in a path, one after another. Backslashes at the end, and more than one between two names, mean
/// nothing.
class KeyPath {
  public:
    explicit KeyPath(LPCSTR path) : rest_(path ? path : "") {}

    /// ERROR_BAD_PATHNAME for a path that begins with a backslash, ERROR_INVALID_PARAMETER for a name that
    /// is too long.
    LONG Check() const;
    /// The next name; empty at the end.
    std::string_view Next();

  private:
    std::string_view rest_;
};

/// The key at the path's end, null when it is not there.
RegistryKey *Walk(RegistryKey *from, KeyPath path);
