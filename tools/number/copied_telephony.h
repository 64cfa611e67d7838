#pragma once
// The machine's telephony settings on a passing machine: there a location can be made the current one, and
// numbers dialled from it, while nothing changes for the programs of the user's own machine.

#include <tools/machine_choice.h>
#include <tools/reg/value.h>

#include <string>
#include <vector>

namespace tools {

/// A key of the registry with all that it holds.
struct KeptKey {
    std::string name;
    std::vector<reg::NamedValue> values;
    std::vector<KeptKey> subkeys;
};

/// For its time this process is on a passing machine with the telephony settings of the one it was on.
class CopiedTelephony {
  public:
    CopiedTelephony();

  private:
    KeptKey kept_; // before the machine changes
    PassingMachine machine_;
};

} // namespace tools
