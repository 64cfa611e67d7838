#include <platform/com/class_list.h>

#include <platform/com/class_keys.h>
#include <platform/files/ownership.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/process_descriptor.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <vector>

namespace {

constexpr int Waiting_Connections = 64;
constexpr int Attempts = 200; // while the folder goes away, or too many wait to be accepted
constexpr useconds_t Pause = 10000;

std::string List_Folder() {
    const std::string folder = Shared_Memory_Folder_Path();
    return folder.empty() ? folder : folder + "/classes";
}

long Make_List_Folder() {
    const long error = Make_Private_Folder(Shared_Memory_Folder_Path());
    return error == NO_ERROR ? Make_Private_Folder(List_Folder()) : error;
}

FileDescriptor New_Socket() {
    return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// The address of a name in a folder, however long the folder's path is: by way of its descriptor.
class Address {
  public:
    Address(const std::string &folder, const std::string &name)
        : folder_(open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)), name_(name) {
        address_.sun_family = AF_UNIX;
        const int length = std::snprintf(address_.sun_path, sizeof address_.sun_path, "/proc/self/fd/%d/%s",
                                         folder_.Get(), name.c_str());
        fits_ = folder_ && length > 0 && static_cast<std::size_t>(length) < sizeof address_.sun_path;
    }
    // For its owner alone, whatever the umask.
    bool Bind(int socket) const {
        return fits_ && bind(socket, Get(), sizeof address_) == 0 &&
               fchmodat(folder_.Get(), name_.c_str(), 0600, 0) == 0;
    }
    bool Connect(int socket) const { return fits_ && connect(socket, Get(), sizeof address_) == 0; }

  private:
    const sockaddr *Get() const { return reinterpret_cast<const sockaddr *>(&address_); }

    FileDescriptor folder_;
    const std::string name_;
    sockaddr_un address_ = {};
    bool fits_;
};

// Sorts by time.
std::string Name_In_Order() {
    static constinit std::atomic<unsigned> count{0};
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    char name[64];
    std::snprintf(name, sizeof name, "-%010lld.%09ld-%d-%u", static_cast<long long>(now.tv_sec),
                  static_cast<long>(now.tv_nsec), static_cast<int>(getpid()), ++count);
    return name;
}

std::vector<std::string> Names_In_List(const std::string &beginning) {
    std::vector<std::string> names;
    const std::string list = List_Folder();
    const OpenFolder folder = Is_Own_Folder(list) ? Open_Folder(list) : OpenFolder();
    if (!folder) return names;
    while (const dirent *entry = readdir(folder.get())) {
        if (std::strncmp(entry->d_name, beginning.c_str(), beginning.size()) == 0)
            names.emplace_back(entry->d_name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void Remove_Name(const std::string &name) {
    unlink((List_Folder() + "/" + name).c_str());
}

// In front of the name of a socket that does not listen yet.
constexpr char Aside[] = "new";

// Zero for a name of another shape.
pid_t Maker_Of(const std::string &name_aside) {
    constexpr std::size_t Class = sizeof Aside - 1 + 38;
    int maker = 0;
    if (name_aside.size() > Class) std::sscanf(name_aside.c_str() + Class, "-%*d.%*d-%d", &maker);
    return maker;
}

// Of programs that were killed while they listed a class.
void Remove_Names_Left_Aside() {
    for (const std::string &name : Names_In_List(Aside)) {
        const pid_t maker = Maker_Of(name);
        if (maker > 0 && kill(maker, 0) != 0 && errno == ESRCH) unlink((List_Folder() + "/" + name).c_str());
    }
}

enum class Answer { Connected, Nobody, Not_Now };

// A forked child may keep its sockets open.
bool Has_Server_Ended(const FileDescriptor &socket) {
    errno = 0;
    const FileDescriptor process = Process_Behind(socket.Get());
    pollfd end = {process.Get(), POLLIN, 0};
    return process ? poll(&end, 1, 0) > 0 : errno == ESRCH;
}

Answer Try_To_Connect(const std::string &name, const FileDescriptor &socket) {
    const bool connected = Address(List_Folder(), name).Connect(socket.Get());
    if (!connected && errno == EAGAIN) return Answer::Not_Now;
    const bool ended = connected ? Has_Server_Ended(socket) : errno == ECONNREFUSED;
    if (ended) Remove_Name(name);
    return connected && !ended ? Answer::Connected : Answer::Nobody;
}

// Empty when nobody is there any more, or takes no connection for too long.
FileDescriptor Connect_To(const std::string &name) {
    FileDescriptor socket = New_Socket();
    if (!socket) return socket;
    for (int i = 0; i < Attempts; ++i) {
        const Answer answer = Try_To_Connect(name, socket);
        if (answer == Answer::Connected && Is_Trusted(socket.Get())) return socket;
        if (answer != Answer::Not_Now) break;
        usleep(Pause);
    }
    return FileDescriptor();
}

bool Peer_Of(int socket, ucred &peer) {
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
}

} // namespace

HRESULT Refusal_To_List(long error) {
    return error == ERROR_ACCESS_DENIED ? E_ACCESSDENIED : E_FAIL;
}

ListedClass::ListedClass(FileDescriptor socket, std::string folder, const std::string &name)
    : socket_(std::move(socket)), folder_(std::move(folder)), path_(folder_ + "/" + name) {}

HRESULT ListedClass::List(REFCLSID clsid, std::shared_ptr<ListedClass> &result) {
    const std::string folder = List_Folder();
    if (folder.empty()) return Refusal_To_List(Why_No_Machine(ERROR_PATH_NOT_FOUND));
    Remove_Names_Left_Aside();
    const std::string name = Text_Of(clsid) + Name_In_Order(), name_aside = Aside + name;
    auto aside = std::make_shared<ListedClass>(FileDescriptor(), folder, name_aside);
    auto listed = std::make_shared<ListedClass>(New_Socket(), folder, name);
    // Another program may take the folder away each time, as it withdraws its last class.
    for (int i = 0; i < Attempts && listed->socket_; ++i) {
        const long error = Make_List_Folder();
        if (error == ERROR_PATH_NOT_FOUND) continue;
        if (error != NO_ERROR) return Refusal_To_List(error);
        if (Address(folder, name_aside).Bind(listed->Socket()) &&
            listen(listed->Socket(), Waiting_Connections) == 0 &&
            rename(aside->path_.c_str(), listed->path_.c_str()) == 0) {
            result = std::move(listed);
            return S_OK;
        }
        if (errno != ENOENT) break;
    }
    return E_FAIL;
}

void ListedClass::Withdraw() {
    if (path_.empty()) return;
    unlink(path_.c_str());
    rmdir(folder_.c_str()); // with the last one
    path_.clear();
}

FileDescriptor Connect_To_Class(REFCLSID clsid) {
    for (const std::string &name : Names_In_List(Text_Of(clsid))) {
        if (FileDescriptor socket = Connect_To(name)) return socket;
    }
    return FileDescriptor();
}

FileDescriptor Process_Behind(int socket) {
    ucred peer;
    if (!Peer_Of(socket, peer) || peer.pid <= 0) return FileDescriptor();
    return FileDescriptor(pidfd_open(peer.pid, 0));
}

bool Is_Trusted(int socket) {
    ucred peer;
    return Peer_Of(socket, peer) && peer.uid == geteuid();
}
