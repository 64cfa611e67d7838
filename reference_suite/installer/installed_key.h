#pragma once
// A registry key below HKEY_LOCAL_MACHINE that the installer writes: by the machine's own calls, since the
// library's memory services are not there before the suite's key is.

#include <platform/registry.h>

#include <initializer_list>
#include <string>

/// Made where it is missing, and open while the object lives. The first failure, the opening's too, stays and
/// ends all writing.
class InstalledKey {
  public:
    explicit InstalledKey(const std::string &path);
    ~InstalledKey();
    InstalledKey(const InstalledKey &) = delete;
    InstalledKey &operator=(const InstalledKey &) = delete;

    bool Has(const char *value) const;
    void Set(const char *value, const std::string &text);
    void Set(const char *value, DWORD number);
    /// One REG_MULTI_SZ.
    void Set(const char *value, std::initializer_list<const char *> lines);
    void Flush();
    /// 0, or the code of the first failure.
    LONG Result() const { return result_; }

  private:
    void Set(const char *value, DWORD type, const void *data, std::size_t size);

    HKEY key_ = nullptr;
    LONG result_;
};
