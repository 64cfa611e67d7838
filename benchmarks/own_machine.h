#pragma once
// A machine for one program: made before anything else of the library is used, and gone at the end, when
// nothing of the program is on it any more. TMPDIR names the place, without it that is /tmp.

#include <platform/machine.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace measure {

/// A new folder; what it is called stays with the caller.
inline std::string New_Folder() {
    std::string folder = std::filesystem::temp_directory_path() / "kelmara-benchmark-XXXXXX";
    if (mkdtemp(folder.data())) return folder;
    std::perror(folder.c_str());
    std::exit(1);
}

class OwnMachine {
  public:
    OwnMachine() {
        if (!Enter_Machine(folder_.c_str())) std::exit(1);
        setenv("KELMARA_MACHINE", folder_.c_str(), 1); // also for the processes that are started
        std::filesystem::create_directory(folder_ + "/drive_c");
    }
    ~OwnMachine() { Remove_Machine(folder_.c_str()); }
    OwnMachine(const OwnMachine &) = delete;
    OwnMachine &operator=(const OwnMachine &) = delete;

    const std::string &Folder() const { return folder_; }

  private:
    const std::string folder_ = New_Folder();
};

} // namespace measure
