#include <reference_suite/companions/log/message_clients.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::seconds Longest_Goodbye{2};
// A sender that is killed before it wakes its readers leaves them waiting: they look for themselves.
constexpr DWORD Longest_Sleep = 5000; // milliseconds

std::uint32_t Number_Of(const void *handle) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

} // namespace

thread_local MessageClients::Client *MessageClients::own_client = nullptr;

MessageClients::Client::~Client() {
    if (board) board->Stop_Reading(reader);
}

bool MessageClients::Client::Wants(const MessageHead &head) const {
    if (code != 0 && code != head.code) return false;
    return own_too || head.sender != GetCurrentProcessId();
}

void MessageClients::Open() {
    const std::lock_guard lock(lock_);
    is_open_ = true;
}

long MessageClients::Add(const std::shared_ptr<MessageBoard> &board, long code, LogMessageCallback callback,
                         void *context, bool own_too, void **handle) {
    Take_In_Ended();
    const auto client = std::make_shared<Client>();
    client->code = code;
    client->callback = callback;
    client->context = context;
    client->own_too = own_too;
    client->data = std::make_unique<char[]>(Longest_Message + 1);
    if (const long error = board->Begin_To_Read(client->reader); error != NO_ERROR) return error;
    client->board = board;

    const std::lock_guard lock(lock_);
    if (!is_open_) return ERROR_INVALID_FUNCTION;
    const auto place = clients_.emplace(client->reader.number, client).first;
    try {
        client->thread = std::thread([this, client] { Run(*client); });
    } catch (...) {
        clients_.erase(place);
        throw;
    }
    *handle = reinterpret_cast<void *>(static_cast<std::uintptr_t>(client->reader.number));
    return NO_ERROR;
}

// --- on the client's thread -------------------------------------------------------------------------------

void MessageClients::Run(Client &client) {
    own_client = &client;
    lock_.lock(); // until Add has given out the handle, which the callback may want
    lock_.unlock();
    while (!client.is_stopping) {
        WaitForSingleObject(client.reader.wake.get(), Longest_Sleep);
        MessageHead head;
        while (!client.is_stopping &&
               client.board->Read_Next(client.reader, head, client.data.get(), client.lost)) {
            if (!client.Wants(head)) continue;
            if (head.whole)
                Hand_Over(client, head);
            else
                ++client.lost;
        }
    }
    client.board->Stop_Reading(client.reader);
    const std::lock_guard lock(lock_);
    client.has_ended = true;
    ended_.notify_all();
}

void MessageClients::Hand_Over(Client &client, const MessageHead &head) try {
    client.data[head.size] = 0;
    const auto lost = static_cast<long>(std::exchange(client.lost, 0));
    if (!client.is_stopping)
        client.callback(head.sender, head.code, client.data.get(), static_cast<long>(head.size), lost,
                        client.context);
} catch (...) {
}

// --- stopping ---------------------------------------------------------------------------------------------

bool MessageClients::Would_Wait_For_This_Thread(const Client &client) const {
    const Client *next = &client;
    while (next && next != own_client) next = next->waited_for;
    return next != nullptr;
}

void MessageClients::Tell_To_Stop(Client &client) {
    client.is_stopping = true;
    SetEvent(client.reader.wake.get());
}

void MessageClients::Remove(void *handle) {
    std::unique_lock lock(lock_);
    const auto found = clients_.find(Number_Of(handle));
    if (found == clients_.end()) return Take_In_Ended(lock);
    const ClientPointer client = found->second;
    Tell_To_Stop(*client);
    if (!Would_Wait_For_This_Thread(*client)) {
        if (own_client) own_client->waited_for = client.get();
        ended_.wait(lock, [&] { return client->has_ended; });
        if (own_client) own_client->waited_for = nullptr;
    }
    Take_In_Ended(lock);
}

void MessageClients::Take_In_Ended() {
    std::unique_lock lock(lock_);
    Take_In_Ended(lock);
}

// Threads that have said that they end are waited for outside the lock, which is held again afterwards.
void MessageClients::Take_In_Ended(std::unique_lock<std::mutex> &lock) {
    for (;;) {
        const auto ended =
            std::ranges::find_if(clients_, [](const auto &entry) { return entry.second->has_ended; });
        if (ended == clients_.end()) return;
        auto taken = clients_.extract(ended);
        lock.unlock();
        taken.mapped()->thread.join();
        taken = {};
        lock.lock();
    }
}

void MessageClients::Remove_All() {
    std::unique_lock lock(lock_);
    is_open_ = false;
    for (const auto &[number, client] : clients_) Tell_To_Stop(*client);
    ended_.wait_for(lock, Longest_Goodbye, [&] {
        return std::ranges::all_of(clients_, [](const auto &entry) {
            return entry.second->has_ended || entry.second.get() == own_client;
        });
    });
    Take_In_Ended(lock);
    for (const auto &[number, client] : clients_) {
        Tell_To_Stop(*client); // one that came when Open was called again meanwhile
        client->thread.detach();
    }
    clients_.clear();
}
