#pragma once
// A key below HKEY_LOCAL_MACHINE that a service has its settings in. Open while the object lives; what cannot
// be read counts as not there, but for want of memory: then std::bad_alloc is thrown.

#include <platform/registry.h>

#include <optional>
#include <string>
#include <vector>

class RegistryKey {
  public:
    explicit RegistryKey(const std::string &path);
    /// One of its subkeys.
    RegistryKey(const std::string &path, const std::string &subkey);
    ~RegistryKey();
    RegistryKey(const RegistryKey &) = delete;
    RegistryKey &operator=(const RegistryKey &) = delete;

    /// Names, in the registry's order.
    std::vector<std::string> Subkeys() const;
    /// Up to its terminator; empty when it is not there.
    std::string Text(const char *name) const;
    std::optional<DWORD> Number(const char *name) const;
    bool Set_Number(const char *name, DWORD number) const;

  private:
    static bool Succeeded(LONG result);
    LONG Query(const char *name, DWORD &type, void *data, DWORD &size) const;

    HKEY key_ = nullptr;
};
