#include <reference_suite/companions/log/log_companion.h>

#include <reference_suite/companions/log/log_file.h>
#include <reference_suite/companions/log/message_clients.h>

#include <atomic>
#include <cstring>
#include <new>
#include <system_error>

#define COMPANION_EXPORT [[gnu::visibility("default")]]

namespace {

// Never destroyed: a client's thread may come back from its callback at any time.
struct Companion {
    std::mutex lock; // of the two pointers, which are null before Initialize and after the end
    std::shared_ptr<LogFile> file;
    std::shared_ptr<MessageBoard> board;
    MessageClients clients;
};

// Outside the companion, whose locks a fork may have found taken.
constinit std::atomic<DWORD> opening_process{0};

Companion &The_Companion() {
    static Companion *companion = new Companion;
    return *companion;
}

std::shared_ptr<LogFile> The_File() {
    Companion &companion = The_Companion();
    const std::lock_guard guard(companion.lock);
    return companion.file;
}

std::shared_ptr<MessageBoard> The_Board() {
    Companion &companion = The_Companion();
    const std::lock_guard guard(companion.lock);
    return companion.board;
}

template <class Step>
long Code_Of(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (const std::system_error &) { // a thread that is not to be had
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

// A forked process has neither the clients' threads nor the places on the board: it takes no part in
// messages.
bool Is_Forked() {
    return opening_process != 0 && opening_process != GetCurrentProcessId();
}

long Open_All() {
    Companion &companion = The_Companion();
    const std::lock_guard guard(companion.lock);
    if (Is_Forked()) return ERROR_INVALID_FUNCTION;
    if (companion.board) return companion.clients.Open(), NO_ERROR;
    std::shared_ptr<LogFile> file;
    std::shared_ptr<MessageBoard> board;
    if (const long error = LogFile::Open(file); error != NO_ERROR) return error;
    if (const long error = MessageBoard::Open(board); error != NO_ERROR) return error;
    companion.file = std::move(file);
    companion.board = std::move(board);
    companion.clients.Open();
    opening_process = GetCurrentProcessId();
    return NO_ERROR;
}

long Write_Entry(const char *data, long size) {
    const std::shared_ptr<LogFile> file = The_File();
    if (!file || !data || size < 1) return NO_ERROR;
    file->Write({data, strnlen(data, static_cast<std::size_t>(size))});
    return NO_ERROR;
}

long Post_Message(const char *data, long size, long code) {
    const std::shared_ptr<MessageBoard> board = The_Board();
    const bool empty = !data || size < 1;
    if (board)
        board->Post(GetCurrentProcessId(), code, empty ? "" : data, empty ? 0 : static_cast<DWORD>(size));
    return NO_ERROR;
}

// The clients go last: their callbacks find nothing left to register with.
void Close_All() {
    if (Is_Forked()) return;
    Companion &companion = The_Companion();
    {
        const std::lock_guard guard(companion.lock);
        companion.file.reset();
        companion.board.reset();
    }
    companion.clients.Remove_All();
}

// Where the process ends and nobody has unloaded the module.
[[gnu::destructor]] void End() {
    Code_Of([] { return Close_All(), NO_ERROR; });
}

} // namespace

extern "C" {

COMPANION_EXPORT long Initialize() {
    return Code_Of(Open_All);
}

COMPANION_EXPORT void Queue_Entry(char *data, long size, long code, long broadcast) {
    Code_Of([&] { return broadcast ? Post_Message(data, size, code) : Write_Entry(data, size); });
}

COMPANION_EXPORT long Get_Messages(long code, LogMessageCallback callback, void *context, bool own_too,
                                   void **client) {
    if (!callback || !client) return ERROR_INVALID_PARAMETER;
    return Code_Of([&]() -> long {
        const std::shared_ptr<MessageBoard> board = The_Board();
        if (!board || Is_Forked()) return ERROR_INVALID_FUNCTION; // not initialised here
        return The_Companion().clients.Add(board, code, callback, context, own_too, client);
    });
}

COMPANION_EXPORT void Stop_Messages(void *client) {
    if (Is_Forked()) return;
    Code_Of([&] { return The_Companion().clients.Remove(client), NO_ERROR; });
}

COMPANION_EXPORT void Run_Cleanup_Thread() {
    if (Is_Forked()) return;
    Code_Of([] {
        The_Companion().clients.Take_In_Ended();
        if (const std::shared_ptr<MessageBoard> board = The_Board()) board->Clear_Away_Dead();
        return NO_ERROR;
    });
}

COMPANION_EXPORT BOOL DllMain(HINSTANCE, DWORD reason, void *) {
    constexpr DWORD Detach = 0;
    if (reason == Detach) End();
    return TRUE;
}
}
