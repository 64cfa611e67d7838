#include <reference_suite/installer/library_links.h>

#include <kelmara/suite/startup.h>

#include <platform/machine.h>

#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// A call of each library tells which file it was loaded from.
const void *const Known_Calls[] = {reinterpret_cast<const void *>(&Host_Path),
                                   reinterpret_cast<const void *>(&Init_Kelmara)};

std::string Link_Library(const fs::path &library, const fs::path &folder) {
    const fs::path link = folder / library.filename();
    const fs::path aside = link.string() + ".new" + std::to_string(getpid());
    std::error_code error;
    const fs::path home = fs::canonical(library.parent_path(), error);
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
