#pragma once
// The machine's telephony settings on a passing machine: there a location can be made the current one, and
// numbers dialled from it, while nothing changes for the programs of the user's own machine.

#include <tools/machine_choice.h>

#include <string>
#include <vector>

namespace tools {

/// A key of the registry with all that it holds.
struct KeptKey {
    struct Value {
        std::string name;
        unsigned long type;
        std::string bytes;
    };
    std::string name;
    std::vector<Value> values;
    std::vector<KeptKey> subkeys;
};

/// What stands below HKEY_LOCAL_MACHINE at that path; empty where nothing does. Fails with 2.
KeptKey Keep_Key(const std::string &path);
/// Writes it there on the machine that this process is on. Fails with 2.
void Write_Key(const std::string &path, const KeptKey &key);

/// For its time this process is on a passing machine with the telephony settings of the one it was on.
class CopiedTelephony {
  public:
    CopiedTelephony();

  private:
    KeptKey kept_; // before the machine changes
    PassingMachine machine_;
};

} // namespace tools
