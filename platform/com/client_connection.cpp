#include <platform/com/client_connection.h>

#include <platform/com/class_list.h>
#include <platform/com/com_thread.h>
#include <platform/kernel/waiting.h>

#include <algorithm>
#include <climits>
#include <poll.h>

static constexpr int Turn_Pause = 1; // milliseconds

static thread_local unsigned turns_held = 0;

ClientConnection::ClientConnection(FileDescriptor socket)
    : socket_(std::move(socket)), process_(Process_Behind(socket_.Get())) {}

std::shared_ptr<ClientConnection> ClientConnection::Open(REFCLSID clsid) {
    FileDescriptor socket = Connect_To_Class(clsid);
    return socket ? std::make_shared<ClientConnection>(std::move(socket)) : nullptr;
}

std::unique_lock<std::mutex> ClientConnection::Wait_For_Turn() {
    const std::shared_ptr<Apartment> serving = Own_Apartment();
    if (!serving) return std::unique_lock(lock_);
    std::unique_lock turn(lock_, std::try_to_lock);
    const Deadline deadline(turns_held ? Longest_Nested_Wait : INFINITE);
    while (!turn.owns_lock() && !Is_Over() && deadline.Left() > 0) {
        pollfd news = {serving->News(), POLLIN, 0};
        if (poll(&news, 1, Turn_Pause) > 0) serving->Messages_Are_Looked_For();
        turn.try_lock();
    }
    return turn;
}

HRESULT ClientConnection::Call(const Frame &request, std::string &results, DWORD limit) {
    if (Is_Over()) return HRESULT_SERVER_UNAVAILABLE;
    if (caller_.load(std::memory_order_relaxed) == gettid()) return RPC_E_CALL_REJECTED;
    const std::unique_lock held = Wait_For_Turn();
    if (Is_Over()) return HRESULT_SERVER_UNAVAILABLE;
    if (!held) return RPC_E_CALL_REJECTED;
    // Over unless the exchange is complete: half of one cannot be gone on from.
    struct Turn {
        ClientConnection &of;
        bool complete = false;
        ~Turn() {
            --turns_held;
            of.caller_.store(0, std::memory_order_relaxed);
            if (!complete) of.over_.store(true, std::memory_order_release);
        }
    } turn{*this};
    caller_.store(gettid(), std::memory_order_relaxed);
    ++turns_held;
    const Deadline deadline(limit);
    if (const HRESULT result = Send(request, deadline); result < 0) return result;
    Frame answer;
    if (const HRESULT result = Receive(answer, deadline); result < 0) return result;
    turn.complete = true;
    results = std::move(answer.body);
    return answer.header.result;
}

HRESULT ClientConnection::Send(const Frame &request, const Deadline &deadline) {
    FrameWriter writer;
    writer.Begin(request);
    for (;;) {
        const Passage passage = writer.Write(socket_.Get());
        if (passage == Passage::Done) return S_OK;
        if (passage == Passage::Ended) return HRESULT_SERVER_UNAVAILABLE;
        const Moment moment = Wait_For(POLLOUT, deadline);
        if (moment == Moment::Too_Late) return CO_E_SERVER_EXEC_FAILURE;
        if (moment == Moment::Ended) return HRESULT_SERVER_UNAVAILABLE;
    }
}

HRESULT ClientConnection::Receive(Frame &answer, const Deadline &deadline) {
    FrameReader reader(FrameDirection::Answer);
    for (;;) {
        const Passage passage = reader.Read(socket_.Get());
        if (passage == Passage::Done) return answer = reader.Take(), S_OK;
        if (passage == Passage::Ended) return HRESULT_CALL_FAILED;
        const Moment moment = Wait_For(POLLIN, deadline);
        if (moment == Moment::Too_Late) return CO_E_SERVER_EXEC_FAILURE;
        if (moment == Moment::Ended) return HRESULT_CALL_FAILED;
    }
}

// What the server said before its end counts, so the socket comes first, and once more behind the end.
ClientConnection::Moment ClientConnection::Wait_For(short events, const Deadline &deadline) {
    const std::shared_ptr<Apartment> serving = Own_Apartment();
    for (;;) {
        pollfd waiting[] = {{socket_.Get(), events, 0},
                            {process_.Get(), POLLIN, 0},
                            {serving ? serving->News() : -1, POLLIN, 0}};
        const long long left = deadline.Never() ? -1 : std::min<long long>(deadline.Left(), INT_MAX);
        const int told = poll(waiting, 3, static_cast<int>(left));
        if (told == 0) return Moment::Too_Late;
        if (told < 0 && errno != EINTR) return Moment::Ended;
        if (told < 0) continue;
        if (waiting[0].revents != 0) return Moment::Ready;
        if (waiting[1].revents != 0) return poll(waiting, 1, 0) > 0 ? Moment::Ready : Moment::Ended;
        if (left == 0) return Moment::Too_Late; // however many clients of its own there are
        serving->Messages_Are_Looked_For();
        if (Is_Over()) return Moment::Ended; // to a child that was forked there
    }
}
