#include <tests/support/test_machine.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

TestMachine::TestMachine() {
    std::string pattern = std::filesystem::temp_directory_path() / "kelmara-test-XXXXXX";
    if (!mkdtemp(pattern.data())) std::abort();
    folder_ = pattern;
    setenv("KELMARA_MACHINE", folder_.c_str(), 1);
    if (!Enter_Machine(folder_.c_str())) std::abort();
}

TestMachine::~TestMachine() {
    Remove_Machine(folder_.c_str());
}

std::string TestMachine::Shared_Folder() const {
    struct stat status = {};
    stat(folder_.c_str(), &status);
    std::ostringstream folder;
    folder << "/dev/shm/kelmara-" << status.st_uid << "-" << std::hex << status.st_dev << "-" << status.st_ino
           << "-" << Read("machine.id");
    return folder.str();
}

void TestMachine::Write(const std::string &relative, const std::string &content) const {
    const mode_t before = umask(0022); // what others may write to is no machine's
    std::filesystem::create_directories(std::filesystem::path(Path(relative)).parent_path());
    std::ofstream(Path(relative), std::ios::binary) << content;
    umask(before);
}

std::string TestMachine::Read(const std::string &relative) const {
    std::ostringstream content;
    content << std::ifstream(Path(relative), std::ios::binary).rdbuf();
    return content.str();
}

void TestMachine::Set(const std::string &setting, const std::string &value) const {
    std::ofstream(Path("machine.conf"), std::ios::app) << setting << " = " << value << "\n";
    std::filesystem::permissions(Path("machine.conf"), std::filesystem::perms(0600)); // whatever the umask
}
