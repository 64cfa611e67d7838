#include <reference_suite/installer/library_links.h>

#include <kelmara/suite/startup.h>

#include <platform/machine.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char Aside[] = ".new"; // and the process, behind the name of a link that is not there yet

// A call of each library tells which file it was loaded from.
const void *const Known_Calls[] = {reinterpret_cast<const void *>(&Host_Path),
                                   reinterpret_cast<const void *>(&Init_Kelmara)};

// Of installers that were killed.
void Remove_Links_Left_Aside(const fs::path &link) {
    const std::string beginning = link.filename().string() + Aside;
    std::error_code error;
    for (fs::directory_iterator at(link.parent_path(), error), end; !error && at != end;
         at.increment(error)) {
        const std::string name = at->path().filename().string();
        if (!name.starts_with(beginning) || !at->is_symlink(error)) continue;
        const pid_t maker = std::atoi(name.c_str() + beginning.size());
        if (maker > 0 && kill(maker, 0) != 0 && errno == ESRCH) unlink(at->path().c_str());
    }
}

// Nothing is to be done where the library is at home: a link to itself would take its place.
std::string Link_Library(const fs::path &library, const fs::path &folder) {
    const fs::path link = folder / library.filename();
    const fs::path aside = link.string() + Aside + std::to_string(getpid());
    std::error_code error;
    Remove_Links_Left_Aside(link);
    const fs::path home = fs::canonical(library.parent_path(), error);
    if (!error && fs::equivalent(home, folder, error)) return {};
    if (!error) fs::remove(aside, error);
    if (!error) fs::create_symlink(home / library.filename(), aside, error);
    if (!error) fs::rename(aside, link, error);
    return error ? link.string() + " cannot be linked: " + error.message() : std::string();
}

} // namespace

std::string Link_Libraries(const std::string &folder) {
    for (const void *call : Known_Calls) {
        Dl_info origin;
        if (dladdr(call, &origin) == 0) return "the file of a library cannot be found";
        std::string problem = Link_Library(origin.dli_fname, folder);
        if (!problem.empty()) return problem;
    }
    return {};
}
