#include <platform/kernel/trusted_code.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int Most_Links = 40; // as many as the host follows

std::string Folder_Of(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? "." : path.substr(0, slash + 1);
}

// Root where the host does not tell.
uid_t Owner_Of(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_uid : 0;
}

std::string Target_Of(const std::string &link) {
    char target[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    return length > 0 && length < PATH_MAX ? std::string(target, static_cast<std::size_t>(length))
                                           : std::string();
}

// By the word of the host, which tells it of what is loaded here, not of what has its name by now. Empty
// where that file has no name any more.
std::string Path_Of_This_Library() {
    constexpr std::string_view Gone = " (deleted)";
    static const char inside = 0;
    const auto here = reinterpret_cast<std::uintptr_t>(&inside);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long start = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx", &start, &end) != 2 || here < start || here >= end) continue;
        const std::size_t path = line.find('/');
        return path == line.npos || line.ends_with(Gone) ? std::string() : line.substr(path);
    }
    return {};
}

struct Owners {
    uid_t file = 0, folder = 0;
    Owners(const std::string &at, const std::string &path) {
        struct stat itself, named;
        if (path.empty() || stat(at.c_str(), &itself) != 0) return;
        file = itself.st_uid;
        const bool is_there = stat(path.c_str(), &named) == 0 && named.st_dev == itself.st_dev &&
                              named.st_ino == itself.st_ino; // or the folder may be anybody's by now
        folder = is_there ? Owner_Of(Folder_Of(path)) : file;
    }
    bool Has(uid_t owner) const { return owner == file || owner == folder; }
};

// None when it has lost its name while they were looked for, or the host does not tell, for want of a
// descriptor: asked each time.
Owners Owners_Of_This_Library() {
    const std::string path = Path_Of_This_Library();
    const Owners owners(path, path);
    return Path_Of_This_Library() == path ? owners : Owners({}, {});
}

bool Gives_Code(uid_t owner) {
    if (owner == 0 || owner == geteuid()) return true;
    // Of the program itself, also where its name has gone to another file since.
    static const Owners program("/proc/self/exe", Target_Of("/proc/self/exe"));
    return program.Has(owner) || Owners_Of_This_Library().Has(owner);
}

bool May_Give_Code(const struct stat &status) {
    return Gives_Code(status.st_uid) && (status.st_mode & S_IWOTH) == 0;
}

bool Is_In_Such_A_Folder(const std::string &path) {
    struct stat status;
    return stat(Folder_Of(path).c_str(), &status) == 0 && May_Give_Code(status);
}

} // namespace

bool May_Give_Code(int descriptor, const std::string &path) {
    struct stat opened, status;
    if (fstat(descriptor, &opened) != 0 || !May_Give_Code(opened)) return false;
    std::string at = path;
    for (int links = 0; links <= Most_Links && !at.empty(); ++links) {
        if (lstat(at.c_str(), &status) != 0 || !Gives_Code(status.st_uid) || !Is_In_Such_A_Folder(at))
            return false;
        if (!S_ISLNK(status.st_mode)) return status.st_dev == opened.st_dev && status.st_ino == opened.st_ino;
        const std::string target = Target_Of(at);
        at = target.starts_with('/') || target.empty() ? target : Folder_Of(at) + "/" + target;
    }
    return false;
}
