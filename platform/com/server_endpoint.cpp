#include <platform/com/server_endpoint.h>

#include <platform/kernel.h>

#include <csignal>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>

namespace {

constexpr useconds_t Pause_Without_Memory = 10000;
constexpr useconds_t Pause_Between_Last_Looks = 1000;

// A thread begun in its scope takes no signals.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoSignals(const NoSignals &) = delete;
    NoSignals &operator=(const NoSignals &) = delete;

  private:
    sigset_t before_;
};

} // namespace

ServerEndpoint::ServerEndpoint(Receiver &receiver)
    : receiver_(receiver), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

std::unique_ptr<ServerEndpoint> ServerEndpoint::Start(Receiver &receiver) {
    std::unique_ptr<ServerEndpoint> endpoint(new ServerEndpoint(receiver));
    if (!endpoint->wake_) return nullptr;
    try {
        const NoSignals scope;
        endpoint->thread_ = std::thread([&run = *endpoint] { run.Run(); });
    } catch (const std::system_error &) {
        return nullptr;
    }
    return endpoint;
}

ServerEndpoint::~ServerEndpoint() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard(lock_);
        // Before the connections end, so that whoever tries again finds another server or none.
        for (const auto &[cookie, listed] : listed_) listed->Withdraw();
        ending_ = true;
    }
    eventfd_write(wake_.Get(), 1);
    thread_.join();
}

void ServerEndpoint::Listen(std::uint32_t class_cookie, std::shared_ptr<ListedClass> listed) {
    const std::lock_guard guard(lock_);
    listed_.emplace(class_cookie, std::move(listed));
    eventfd_write(wake_.Get(), 1);
}

void ServerEndpoint::Stop_Listening(std::uint32_t class_cookie) {
    const std::lock_guard guard(lock_);
    const auto found = listed_.find(class_cookie);
    if (found == listed_.end()) return;
    found->second->Withdraw();
    listed_.erase(found);
    eventfd_write(wake_.Get(), 1);
}

void ServerEndpoint::Pass_On(Exchange &exchange) {
    exchange.answered.store(true, std::memory_order_release);
    eventfd_write(wake_.Get(), 1);
}

bool ServerEndpoint::Is_Ending() {
    const std::lock_guard guard(lock_);
    return ending_;
}

void ServerEndpoint::Run() {
    while (!Is_Ending()) {
        try {
            List_What_To_Wait_For();
            if (poll(waiting_.data(), waiting_.size(), Longest_Pause()) < 0) continue;
            eventfd_t count;
            if (waiting_[0].revents != 0) eventfd_read(wake_.Get(), &count);
            // Connections first: those that are accepted now were not waited for.
            Look_At_Connections(&waiting_[1 + listeners_.size()]);
            Look_At_Listeners(&waiting_[1]);
        } catch (const std::bad_alloc &) {
            usleep(Pause_Without_Memory);
        }
    }
    Pass_Last_Answers_On();
}

// What was answered before the end is still the clients', if they take it soon.
void ServerEndpoint::Pass_Last_Answers_On() {
    const DWORD since = GetTickCount();
    connections_.remove_if([](ServerConnection &connection) {
        try {
            return connection.Pass_Answer_On() == ServerConnection::News::Ended || !connection.Is_Writing();
        } catch (const std::bad_alloc &) { // its end is an answer too
            return true;
        }
    });
    while (!connections_.empty() && GetTickCount() - since < Last_Patience) {
        usleep(Pause_Between_Last_Looks);
        connections_.remove_if([](ServerConnection &connection) {
            return connection.Write() == ServerConnection::News::Ended || !connection.Is_Writing();
        });
    }
}

void ServerEndpoint::List_What_To_Wait_For() {
    waiting_.clear();
    waiting_.push_back({wake_.Get(), POLLIN, 0});
    listeners_.clear();
    {
        const std::lock_guard guard(lock_);
        listeners_.assign(listed_.begin(), listed_.end());
    }
    for (const auto &[cookie, listed] : listeners_) waiting_.push_back({listed->Socket(), POLLIN, 0});
    for (const ServerConnection &connection : connections_) connection.Add_To(waiting_);
    waiting_.push_back({-1, 0, 0}); // there is something behind the listeners in any case
}

int ServerEndpoint::Longest_Pause() const {
    for (const ServerConnection &connection : connections_) {
        if (connection.Is_Dawdling()) return 1000;
    }
    return -1;
}

void ServerEndpoint::Look_At_Connections(const pollfd *told) {
    bool some_ended = false;
    for (auto next = connections_.begin(); next != connections_.end(); told += ServerConnection::Polled) {
        const auto connection = next++;
        if (Goes_On(*connection, told)) continue;
        connections_.erase(connection);
        some_ended = true;
    }
    if (some_ended) receiver_.Some_Have_Ended();
}

// False when the connection has ended or must.
bool ServerEndpoint::Goes_On(ServerConnection &connection, const pollfd *told) try {
    using News = ServerConnection::News;
    if (connection.Pass_Answer_On() == News::Ended) return false;
    const News news = connection.Look(told);
    if (news == News::Request)
        receiver_.Take({connection.Link(), connection.Class_Cookie(), connection.Take_Request()});
    return news != News::Ended && !connection.Has_Dawdled_Too_Long();
} catch (const std::bad_alloc &) {
    return false;
}

void ServerEndpoint::Look_At_Listeners(const pollfd *told) {
    for (const auto &[cookie, listed] : listeners_) {
        if ((told++)->revents != 0) Accept(cookie, listed->Socket());
    }
    listeners_.clear();
}

void ServerEndpoint::Accept(std::uint32_t class_cookie, int listener) {
    FileDescriptor socket(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) usleep(Pause_Without_Memory);
        return;
    }
    if (connections_.size() >= Most_Connections || !Is_Trusted(socket.Get())) return;
    connections_.emplace_back(class_cookie, std::move(socket));
}
