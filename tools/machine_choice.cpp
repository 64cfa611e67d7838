#include <tools/failure.h>
#include <tools/machine_choice.h>

#include <platform/machine.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

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

BorrowedMachine::BorrowedMachine() {
    if (Machine_In_Force() != 0) return;
    const char *temporary = std::getenv("TMPDIR");
    std::string folder =
        std::string(temporary != nullptr && *temporary != 0 ? temporary : "/tmp") + "/kelmara-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw Failure(Exit_Unusable, folder + ": " + std::strerror(errno));
    folder_ = folder;
    if (!Enter_Machine(folder_.c_str()))
        throw Failure(Exit_Unusable, folder_ + ": no place for a passing machine");
}

BorrowedMachine::~BorrowedMachine() {
    if (!folder_.empty()) Remove_Machine(folder_.c_str());
}

} // namespace tools
