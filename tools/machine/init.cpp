#include <tools/failure.h>
#include <tools/machine/machine_commands.h>

#include <tools/machine/settings_text.h>
#include <tools/output.h>
#include <tools/tables/columns.h>

#include <platform/machine.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace {

std::string Settings_Of(const InitOptions &options) {
    std::string lines;
    if (!options.windows.empty()) {
        const std::string fault = Fault_Of_Setting("windows", options.windows);
        if (!fault.empty()) throw Failure(Exit_Unusable, "--windows " + options.windows + ": " + fault);
        lines += "windows = " + options.windows + "\n";
    }
    if (!options.screen.empty() && !Screen_Settings(options.screen, lines))
        throw Failure(Exit_Unusable,
                      "--screen " + options.screen + ": not WIDTHxHEIGHT or WIDTHxHEIGHTxDEPTH");
    for (const std::string &drive : options.drives) {
        if (!Drive_Setting_Line(drive, lines))
            throw Failure(Exit_Unusable,
                          "--drive " + drive + ": not a letter other than c and z, and a kind");
    }
    return lines;
}

void Refuse_What_Is_A_Machine(const std::string &folder) {
    struct stat status;
    if (lstat((folder + "/machine.id").c_str(), &status) == 0)
        throw Failure(Exit_Unusable, folder + ": is a machine already; it is left as it is");
}

/// Empty where neither the command nor the environment names one: then it is the user's own.
std::string Place_Of(const std::string &folder) {
    const char *named = std::getenv("KELMARA_MACHINE");
    return !folder.empty() ? folder : named != nullptr ? named : "";
}

/// What is made on the way to a machine, taken away again unless that is done. What somebody else has put
/// beside it meanwhile stays.
class Making {
  public:
    explicit Making(std::string place) : place_(std::move(place)) {
        for (std::string path = place_; !path.empty() && !Status_Of(path); path.erase(path.rfind('/') + 1)) {
            while (path.ends_with('/')) path.pop_back();
            new_folders_.push_back(path);
        }
        Remember_Mode();
    }
    ~Making() {
        try {
            if (!done_) Take_Back();
        } catch (...) { // no memory: what is left tells of itself
        }
        if (before_ >= 0) close(before_);
    }
    Making(const Making &) = delete;
    Making &operator=(const Making &) = delete;

    void Becomes_A_Machine(const std::string &folder) { folder_ = folder; }
    void Write_Settings(const std::string &settings) {
        const std::string path = folder_ + "/machine.conf";
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (file < 0) throw Failure(Exit_Unusable, path + ": " + std::strerror(errno));
        own_settings_ = path;
        errno = ENOSPC; // what a part that was written means
        const auto size = static_cast<ssize_t>(settings.size());
        const bool written = fchmod(file, 0600) == 0 && // whatever the umask
                             write(file, settings.data(), settings.size()) == size && fsync(file) == 0;
        const int error = errno;
        close(file);
        if (!written) throw Failure(Exit_Unusable, path + ": " + std::strerror(error));
    }
    void Make_Drive() {
        const std::string path = folder_ + "/drive_c";
        if (!Status_Of(path)) own_drive_ = path;
        char drive[PATH_MAX];
        if (!Host_Path("c:\\", drive, sizeof drive)) throw Failure(Exit_Unusable, path + ": cannot be made");
    }
    void Is_Done() { done_ = true; }

  private:
    static std::optional<struct stat> Status_Of(const std::string &path) {
        struct stat status;
        return lstat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
    }
    // Of the folder itself, wherever its name leads by the time that it is given back; and no other user's.
    void Remember_Mode() {
        struct stat status;
        before_ = open(place_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (before_ < 0) return;
        if (fstat(before_, &status) == 0 && status.st_uid == geteuid()) {
            mode_before_ = status.st_mode & 07777;
            return;
        }
        close(before_);
        before_ = -1;
    }
    // Not where another process has a machine in it by now.
    void Give_Mode_Back() const {
        struct stat status;
        if (before_ < 0 || fstat(before_, &status) != 0 || (status.st_mode & 07777) == mode_before_) return;
        std::error_code error;
        if (flock(before_, LOCK_EX | LOCK_NB) != 0) return;
        const std::filesystem::path itself = "/proc/self/fd/" + std::to_string(before_);
        if (std::filesystem::is_empty(itself, error) && !error) fchmod(before_, mode_before_);
        flock(before_, LOCK_UN);
    }
    bool Has_Only_Its_Number() const {
        std::error_code error;
        std::filesystem::directory_iterator entry(folder_, error);
        for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
            if (entry->path().filename() != "machine.id") return false;
        }
        return !error;
    }
    void Take_Back() const {
        if (!own_settings_.empty()) unlink(own_settings_.c_str());
        if (!own_drive_.empty()) rmdir(own_drive_.c_str());
        if (!folder_.empty() && Has_Only_Its_Number()) unlink((folder_ + "/machine.id").c_str());
        for (const std::string &folder : new_folders_) rmdir(folder.c_str());
        Give_Mode_Back();
    }

    const std::string place_;
    std::vector<std::string> new_folders_; // the innermost first
    int before_ = -1;                      // the place, where it is a folder of this user's
    mode_t mode_before_ = 0;
    std::string folder_, own_settings_, own_drive_; // empty: not made
    bool done_ = false;
};

// The machine's reasons stand on standard error already.
std::string Make_In(const std::string &folder) {
    if (folder.empty()) {
        if (Machine_In_Force() != 0) Refuse_What_Is_A_Machine(Machine_Folder());
        if (Machine_Folder() == nullptr) throw Failure(Exit_Unusable, "no machine was made");
        return Machine_Folder();
    }
    if (!Enter_Machine(folder.c_str())) throw Failure(Exit_Unusable, folder + ": no machine was made");
    return Machine_Folder();
}

} // namespace

ExitCode Make_Machine(const InitOptions &options) {
    const std::string settings = Settings_Of(options);
    const std::string place = Place_Of(options.folder);
    if (!place.empty()) Refuse_What_Is_A_Machine(place);
    Making making(place);
    const std::string folder = Make_In(options.folder);
    making.Becomes_A_Machine(folder);
    if (!settings.empty()) making.Write_Settings(settings);
    making.Make_Drive();
    making.Is_Done();
    Print_Line("made a machine in " + Shown(folder));
    return Exit_Success;
}

} // namespace tools
