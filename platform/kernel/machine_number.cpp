#include <platform/kernel/machine_number.h>

#include <platform/files/ownership.h>

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>

namespace {

constexpr std::size_t Number_Length = 32;
constexpr unsigned Patience_For_Another_Maker = 2000; // milliseconds

std::string Read_Number(const std::string &path) {
    char number[Number_Length + 1] = {};
    const FileDescriptor file = Open_Own_File(path, O_RDONLY);
    if (!file) return {};
    errno = EINVAL;
    if (read(file.Get(), number, Number_Length) != static_cast<ssize_t>(Number_Length)) return {};
    return std::strspn(number, "0123456789abcdef") == Number_Length ? number : std::string();
}

bool Is_Empty_File(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0;
}

// One that was torn by a power failure is replaced by whoever holds the folder's lock: two would leave some
// processes with the first one's number.
std::string Make_Number(const std::string &folder, bool locked) {
    const std::string path = folder + "/machine.id";
    for (int attempt = 0; attempt < 100; ++attempt) {
        const bool torn = Is_Empty_File(path);
        std::string existing = Read_Number(path);
        if (!existing.empty() || errno == Not_This_Users_Own || (errno != ENOENT && !torn)) return existing;
        if (torn && !locked) {
            errno = EWOULDBLOCK;
            return {};
        }
        char number[Number_Length + 1] = {};
        unsigned char bytes[16];
        if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) return {};
        for (int i = 0; i < 16; ++i) std::snprintf(number + 2 * i, 3, "%02x", bytes[i]);
        // Written aside and linked into place, so that nobody ever reads half a number.
        const std::string aside = path + "." + number;
        FileDescriptor fresh = Open_Own_File(aside, O_WRONLY | O_CREAT | O_EXCL);
        if (!fresh) return {};
        const bool written =
            write(fresh.Get(), number, Number_Length) == static_cast<ssize_t>(Number_Length) &&
            fsync(fresh.Get()) == 0;
        fresh.Close();
        const bool placed = torn ? rename(aside.c_str(), path.c_str()) == 0 // there is one all the while
                                 : link(aside.c_str(), path.c_str()) == 0 || errno == EEXIST;
        if (written && !placed) {
            unlink(aside.c_str());
            return {};
        }
        unlink(aside.c_str());
        if (!written) return {};
    }
    return {};
}

} // namespace

bool Is_Machine_Number_Under_Way(const std::string &name) {
    constexpr char Beginning[] = "machine.id.";
    constexpr std::size_t Length = sizeof Beginning - 1;
    return name.size() == Length + Number_Length && name.compare(0, Length, Beginning) == 0 &&
           name.find_first_not_of("0123456789abcdef", Length) == name.npos;
}

std::string Read_Machine_Number(const std::string &folder) {
    return Read_Number(folder + "/machine.id");
}

std::string Read_Or_Make_Machine_Number(const std::string &folder) {
    std::string number = Read_Machine_Number(folder);
    if (!number.empty()) return number;
    const FileDescriptor whole(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const bool locked = whole && Lock_File_In_Time(whole.Get(), LOCK_EX, Patience_For_Another_Maker) == 0;
    struct stat status;
    const bool open_again = whole && fstat(whole.Get(), &status) == 0 && (status.st_mode & 0022) != 0;
    number = open_again ? std::string() : Make_Number(folder, locked);
    if (open_again) errno = Not_This_Users_Own; // by one who could not make a machine of it
    if (whole) Unlock_File(whole.Get());
    return number;
}
