#pragma once
// Keys of the machine's registry as a reader finds them: open, and with all that they hold, in the order of
// their names.
//
// Other programs may write meanwhile. What is read of one key at once is what it had at one moment; failures
// of the machine become Failure with the key's path in front.

#include <tools/reg/key_path.h>
#include <tools/reg/value.h>

namespace tools::reg {

/// Fails with 2.
[[noreturn]] void Fail_On_Key(const std::string &path, LONG code);

class OpenKey {
  public:
    OpenKey() = default;
    /// Not open, without a failure, when the key is not there.
    explicit OpenKey(const KeyPath &path);
    ~OpenKey();
    OpenKey(OpenKey &&other) noexcept;
    OpenKey &operator=(OpenKey &&other) noexcept;

    explicit operator bool() const { return key_ != nullptr; }
    HKEY Get() const { return key_; }
    const std::string &Path() const { return path_; }

    std::string Class() const;
    std::vector<NamedValue> Values() const;
    std::vector<std::string> Subkeys() const;

  private:
    HKEY key_ = nullptr;
    std::string path_;
};

/// The key as it is stored below `path`'s root: with the letter case that its names were made with. Fails
/// with 1 when it is not there.
KeyPath Stored_Path(const KeyPath &path);

/// The path of the key that the predefined one stands for: "HKEY_LOCAL_MACHINE\Software\Classes" for
/// HKEY_CLASSES_ROOT.
std::string Whole_Path(HKEY key, const std::string &path);

/// That key and all below it, each before what is below it. A key that goes away meanwhile is not among them.
std::vector<KeyPath> Keys_From(const KeyPath &top);

} // namespace tools::reg
