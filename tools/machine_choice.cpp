#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/machine_choice.h>

#include <platform/errors.h>
#include <platform/machine.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

namespace tools {

// There is no way off a machine that is no other machine, and the library is on one from its loading.
void Choose_Machine(const std::string &folder, const char *const *argv) {
    const char *named = std::getenv("KELMARA_MACHINE");
    if (folder.empty() || (named != nullptr && folder == named)) return;
    const bool is_on_another = Machine_In_Force() != 0;
    if (setenv("KELMARA_MACHINE", folder.c_str(), 1) != 0) throw std::bad_alloc();
    if (!is_on_another) return;
    Leave_Machine();
    End_If_Interrupted(); // nothing of it is left behind
    execv("/proc/self/exe", const_cast<char *const *>(argv));
    throw Failure(Exit_Unusable, std::string("cannot begin on another machine: ") + std::strerror(errno));
}

void Require_Machine() {
    if (Machine_In_Force() != 0) return;
    const char *named = std::getenv("KELMARA_MACHINE");
    if (Machine_Refusal() == ERROR_ACCESS_DENIED)
        throw Failure(Exit_Unusable, std::string(named != nullptr ? named : "the machine's folder") +
                                         ": not a machine of this user alone; it is left as it is");
    throw Failure(Exit_Negative, named != nullptr
                                     ? std::string(named) + ": no machine; `kelmara machine init` makes one"
                                     : "no machine yet; `kelmara machine init` makes one");
}

PassingMachine::PassingMachine() {
    if (Machine_In_Force() != 0) before_ = Machine_Folder();
    std::string wrong;
    for (const std::string &place : Passing_Places()) {
        Remove_Left_Machines(place);
        folder_.emplace(place);
        wrong = folder_->Path() + ": " +
                (folder_->Is_Made() ? "no place for a passing machine" : std::strerror(errno));
        if (!folder_->Is_Made()) continue;
        if (Enter_Machine(folder_->Path().c_str())) {
            folder_->Hold();
            return;
        }
        rmdir(folder_->Path().c_str());
    }
    throw Failure(Exit_Unusable, wrong);
}

PassingMachine::~PassingMachine() {
    if (!before_.empty()) Enter_Machine(before_.c_str());
    Remove_Machine(folder_->Path().c_str());
}

BorrowedMachine::BorrowedMachine() {
    if (Machine_In_Force() == 0) machine_.emplace();
}

} // namespace tools
