#include <platform/security/administrator.h>

#include <platform/kernel/code_page.h>
#include <platform/kernel/machine_state.h>

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char *Administrator_Groups[] = {"sudo", "wheel", "admin"};
constexpr std::size_t Room_For_A_Group = 4096;
constexpr std::size_t Most_Room_For_A_Group = 1 << 24;

bool Has_Group(const std::vector<gid_t> &groups, const char *name) {
    std::vector<char> room(Room_For_A_Group);
    group record;
    group *found = nullptr;
    int error;
    while ((error = getgrnam_r(name, &record, room.data(), room.size(), &found)) == ERANGE &&
           room.size() < Most_Room_For_A_Group) {
        room.resize(room.size() * 2);
    }
    if (error != 0 || !found) return false;
    return std::find(groups.begin(), groups.end(), found->gr_gid) != groups.end();
}

std::vector<gid_t> Groups_Of_This_Process() {
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<std::size_t>(std::max(count, 0)));
    groups.push_back(getegid());
    return groups;
}

} // namespace

bool Is_Administrator() {
    std::string stated;
    if (Find_Machine_Setting("administrator", stated)) {
        if (Equal_Without_Case(stated, "yes")) return true;
        if (Equal_Without_Case(stated, "no")) return false;
    }
    if (geteuid() == 0) return true;
    const std::vector<gid_t> groups = Groups_Of_This_Process();
    return std::any_of(std::begin(Administrator_Groups), std::end(Administrator_Groups),
                       [&](const char *name) { return Has_Group(groups, name); });
}
