#include <tools/failure.h>
#include <tools/machine_choice.h>

#include <platform/machine.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace tools {

void Choose_Machine(const std::string &folder) {
    if (!folder.empty()) setenv("KELMARA_MACHINE", folder.c_str(), 1);
}

void Require_Machine() {
    if (Machine_In_Force() != 0) return;
    const char *named = std::getenv("KELMARA_MACHINE");
    throw Failure(Exit_Negative, named != nullptr
                                     ? std::string(named) + ": no machine; `kelmara machine init` makes one"
                                     : "no machine yet; `kelmara machine init` makes one");
}

PassingMachine::PassingMachine() {
    if (Machine_In_Force() != 0) before_ = Machine_Folder();
    const char *temporary = std::getenv("TMPDIR");
    std::string folder =
        std::string(temporary != nullptr && *temporary != 0 ? temporary : "/tmp") + "/kelmara-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw Failure(Exit_Unusable, folder + ": " + std::strerror(errno));
    folder_ = folder;
    if (Enter_Machine(folder_.c_str())) return;
    rmdir(folder_.c_str());
    throw Failure(Exit_Unusable, folder_ + ": no place for a passing machine");
}

PassingMachine::~PassingMachine() {
    if (!before_.empty()) Enter_Machine(before_.c_str());
    Remove_Machine(folder_.c_str());
}

BorrowedMachine::BorrowedMachine() {
    if (Machine_In_Force() == 0) machine_.emplace();
}

} // namespace tools
