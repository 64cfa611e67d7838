// The list of offered classes, without a connection to anybody: the host tells which sockets there still are,
// by the names that they were made under. It tells each network namespace of its own sockets alone; a server
// in another one is looked for in its own.

#include <platform/machine_contents.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/outcome.h>
#include <platform/view/seen_blocks.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using HostStream = std::unique_ptr<FILE, decltype([](FILE *stream) { std::fclose(stream); })>;

constexpr char Aside[] = "new"; // in front of a name that is not in the list yet
constexpr std::size_t Aside_Length = sizeof Aside - 1;

// The last names of all sockets' paths, as `process` sees them. False where the host does not tell.
bool Find_Sockets(const std::string &process, std::set<std::string> &names) {
    const HostStream sockets(std::fopen(("/proc/" + process + "/net/unix").c_str(), "re"));
    char text[1024];
    if (!sockets || !std::fgets(text, sizeof text, sockets.get())) return false;
    while (std::fgets(text, sizeof text, sockets.get())) {
        const std::string_view line(text, std::strcspn(text, "\n"));
        const std::size_t slash = line.rfind('/');
        if (slash != line.npos) names.emplace(line.substr(slash + 1));
    }
    return true;
}

bool Is_There(DWORD process) {
    return process != 0 && (kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM);
}

long Find_List(std::string &list) {
    if (const long error = Find_Shared_Folder(list, ERROR_PATH_NOT_FOUND); error != NO_ERROR) return error;
    list += "/classes";
    return Refusal_Of_Folder(list);
}

struct Entry {
    std::string file;
    std::string class_id;
    DWORD process = 0;
};

// "{class}-seconds.nanoseconds-process-count". False for what is no entry.
bool Read_Entry(const std::string &file, Entry &entry) {
    const std::string name = file.starts_with(Aside) ? file.substr(Aside_Length) : file;
    const std::size_t end = name.find('}');
    unsigned process = 0;
    if (!name.starts_with('{') || end == std::string::npos || end >= sizeof MachineClass::class_id)
        return false;
    if (std::sscanf(name.c_str() + end + 1, "-%*d.%*d-%u", &process) != 1) return false;
    entry = {file, name.substr(0, end + 1), process};
    return true;
}

std::vector<Entry> Entries_In(const std::string &folder) {
    std::vector<Entry> entries;
    const OpenFolder opened = Is_Own_Folder(folder) ? Open_Folder(folder) : OpenFolder();
    Entry entry;
    while (const dirent *each = opened ? readdir(opened.get()) : nullptr) {
        if (Read_Entry(each->d_name, entry)) entries.push_back(entry);
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry &left, const Entry &right) { return left.file < right.file; });
    return entries;
}

bool Is_Offered_Elsewhere(const std::string &socket, DWORD process) {
    if (!Is_There(process)) return false;
    std::set<std::string> sockets;
    return !Find_Sockets(std::to_string(process), sockets) || sockets.contains(socket);
}

template <class Visit>
void For_Each_Class(const std::string &folder, Visit visit) {
    const std::vector<Entry> entries = Entries_In(folder); // before the sockets: one that comes is known then
    std::set<std::string> sockets;
    Find_Sockets("self", sockets);
    for (const Entry &entry : entries) {
        const bool is_aside = entry.file.starts_with(Aside);
        const std::string made_as = is_aside ? entry.file : Aside + entry.file;
        const bool offered = sockets.contains(made_as) || Is_Offered_Elsewhere(made_as, entry.process);
        if (is_aside && offered) continue;
        MachineClass listed = {};
        std::snprintf(listed.class_id, sizeof listed.class_id, "%s", entry.class_id.c_str());
        std::snprintf(listed.file, sizeof listed.file, "%s/%s", folder.c_str(), entry.file.c_str());
        listed.process_id = entry.process;
        listed.offered = offered;
        if (!visit(listed)) return;
    }
}

} // namespace

extern "C" {

BOOL Visit_Machine_Classes(MachineClassVisitor visit, void *context) {
    return Within_Memory(FALSE, [=] {
        std::string list;
        const long error = visit ? Find_List(list) : ERROR_INVALID_PARAMETER;
        if (error != NO_ERROR) return Succeed_Or_Tell(error);
        For_Each_Class(list, [=](const MachineClass &listed) { return visit(&listed, context); });
        return TRUE;
    });
}

BOOL Clear_Away_Ended_Classes() {
    return Within_Memory(FALSE, [] {
        std::string list;
        if (const long error = Find_List(list); error != NO_ERROR) return Succeed_Or_Tell(error);
        For_Each_Class(list, [](const MachineClass &listed) {
            if (!listed.offered) unlink(listed.file);
            return true;
        });
        if (Is_Own_Folder(list)) rmdir(list.c_str()); // with the last one
        return TRUE;
    });
}
}
