#include <tools/failure.h>
#include <tools/machine/machine_commands.h>

#include <tools/machine/settings_text.h>
#include <tools/output.h>

#include <platform/machine.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
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

void Write_New(const std::string &path, const std::string &content) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool written =
        file >= 0 && fchmod(file, 0600) == 0 &&
        write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
        fsync(file) == 0;
    const int error = errno;
    if (file >= 0) close(file);
    if (!written) throw Failure(Exit_Unusable, path + ": " + std::strerror(error));
}

// The machine's reasons stand on standard error already.
std::string Make_In(const std::string &folder) {
    if (folder.empty()) {
        if (Machine_In_Force() != 0) Refuse_What_Is_A_Machine(Machine_Folder());
        if (Machine_Folder() == nullptr) throw Failure(Exit_Unusable, "no machine was made");
        return Machine_Folder();
    }
    Refuse_What_Is_A_Machine(folder);
    if (!Enter_Machine(folder.c_str())) throw Failure(Exit_Unusable, folder + ": no machine was made");
    return Machine_Folder();
}

} // namespace

ExitCode Make_Machine(const InitOptions &options) {
    const std::string settings = Settings_Of(options);
    // What somebody else has made meanwhile, in the same folder, is not taken away again.
    const bool made = !options.folder.empty() && mkdir(options.folder.c_str(), 0700) == 0;
    const std::string folder = Make_In(options.folder);
    try {
        if (!settings.empty()) Write_New(folder + "/machine.conf", settings);
        char path[PATH_MAX];
        if (!Host_Path("c:\\", path, sizeof path))
            throw Failure(Exit_Unusable, folder + "/drive_c: cannot be made");
    } catch (const Failure &) {
        if (made) Remove_Machine(folder.c_str());
        throw;
    }
    Print_Line("made a machine in " + folder);
    return Exit_Success;
}

} // namespace tools
