#include <kelmara/shared_state/log.h>

#include <kelmara/foundation/string_helpers.h>
#include <kelmara/shared_state/companion_path.h>
#include <kelmara/shared_state/log_library.h>
#include <kelmara/suite/folders.h>
#include <kelmara/system/file.h>
#include <kelmara/system/remembered_directory.h>

#include <platform/files.h>
#include <platform/kernel.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

using InitializeProc = long (*)();
using QueueEntryProc = void (*)(char *data, long size, long code, long broadcast);
using GetMessagesProc = long (*)(long first, MessageCallback callback, void *context, bool fourth,
                                 void **client);
using StopMessagesProc = void (*)(void *client);
using RunCleanupProc = void (*)();

constexpr long Log_Entry = 0, Broadcast = 1; // what Queue_Entry is told
constexpr int Longest_Entry = 1024, Longest_Debug_Entry = 255, Longest_Raw_Text = 2047;
constexpr DWORD Wait_For_Load = 1000, Wait_For_Calls = 2000; // milliseconds
constexpr int Root_Folder = 8;

// The companion is ready exactly when its Queue_Entry is known, which is set last.
constinit std::atomic<HMODULE> g_hLogLibrary{nullptr};
constinit std::atomic<QueueEntryProc> g_pQueueEntry{nullptr};
constinit std::atomic<bool> g_bDebugLogging{false};

constinit std::atomic<bool> Load_Under_Way{false};
constinit std::atomic<DWORD> Loading_Process{0};
constinit std::atomic<bool> Is_Over{false}; // the exit routine has run
constinit std::atomic<long> Calls_Under_Way{0};
[[gnu::tls_model("initial-exec")]] constinit thread_local long Calls_Of_This_Thread = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool This_Thread_Loads = false;

/// Stands in each call that may get to the companion: while there is one it is not unloaded.
class CallUnderWay {
  public:
    CallUnderWay() : m_LastError(GetLastError()) {
        ++Calls_Under_Way;
        ++Calls_Of_This_Thread;
    }
    ~CallUnderWay() {
        --Calls_Of_This_Thread;
        --Calls_Under_Way;
        SetLastError(m_LastError);
    }
    CallUnderWay(const CallUnderWay &) = delete;
    CallUnderWay &operator=(const CallUnderWay &) = delete;

  private:
    const DWORD m_LastError;
};

// --- loading ----------------------------------------------------------------------------------------------

/// One thread's turn to load. Not to be had by a thread that has it, when the time is over, and when there is
/// nothing left to load.
class LoadTurn {
  public:
    LoadTurn() {
        const DWORD start = GetTickCount();
        while (!g_pQueueEntry && !Is_Over && GetTickCount() - start < Wait_For_Load) {
            m_Is_Had = !Load_Under_Way.exchange(true);
            if (m_Is_Had) break;
            Sleep(1);
        }
        if (m_Is_Had) This_Thread_Loads = true;
    }
    ~LoadTurn() {
        if (!m_Is_Had) return;
        This_Thread_Loads = false;
        Load_Under_Way = false;
    }
    LoadTurn(const LoadTurn &) = delete;
    LoadTurn &operator=(const LoadTurn &) = delete;
    bool Is_Had() const { return m_Is_Had; }

  private:
    bool m_Is_Had = false;
};

/// The current directory is in the folder of `file` for the length of a scope; where the way back cannot be
/// told, it stays where it is.
class DirectoryVisit {
  public:
    explicit DirectoryVisit(const char *file) {
        if (!m_Before.Is_Known()) return;
        char folder[Companion_Path_Size + 1];
        std::snprintf(folder, sizeof folder - 1, "%s", file);
        Tail_String(folder, '\\', false);
        const std::size_t length = std::strlen(folder);
        folder[length] = '\\';
        folder[length + 1] = 0;
        Machine_Change_Directory(folder);
    }
    ~DirectoryVisit() {
        if (m_Before.Is_Known()) m_Before.Go_Back();
    }
    DirectoryVisit(const DirectoryVisit &) = delete;
    DirectoryVisit &operator=(const DirectoryVisit &) = delete;

  private:
    const RememberedDirectory m_Before;
};

bool Is_Debug_Switch_There() {
    constexpr char name[] = "logVars.txt";
    char path[MAX_PATH + sizeof name];
    GetKelMaraFolderPath(Root_Folder, path);
    if (!*path) return false;
    std::strcat(path, name);
    CKMFile file;
    return file.Open(path, false, false) == 0;
}

// Null when the companion is not whole or does not want to work.
QueueEntryProc Start_Companion(HMODULE companion) try {
    g_bDebugLogging = Is_Debug_Switch_There();
    const auto initialize = reinterpret_cast<InitializeProc>(GetProcAddress(companion, "Initialize"));
    const auto queue_entry = reinterpret_cast<QueueEntryProc>(GetProcAddress(companion, "Queue_Entry"));
    const long answer = initialize ? initialize() : 1;
    return answer == 0 ? queue_entry : nullptr;
} catch (...) {
    return nullptr;
}

void Load_From(const char *path) {
    const DirectoryVisit visit(path);
    const HMODULE companion = LoadLibraryA(path);
    if (!companion) return;
    const QueueEntryProc queue_entry = Start_Companion(companion);
    if (!queue_entry) {
        FreeLibrary(companion);
        return;
    }
    g_hLogLibrary = companion;
    g_pQueueEntry = queue_entry;
}

[[gnu::noinline]] void Load_Log_Library() {
    if (This_Thread_Loads) return;
    char path[Companion_Path_Size] = {};
    if (!Read_Companion_Path("Log", path)) return;
    Loading_Process = GetCurrentProcessId();
    const LoadTurn turn;
    if (turn.Is_Had() && !g_pQueueEntry) Load_From(path);
}

bool Log_Library_Ready() {
    if (g_pQueueEntry) return true;
    if (Is_Over) return false;
    Load_Log_Library();
    return g_pQueueEntry != nullptr;
}

// --- calling ----------------------------------------------------------------------------------------------

template <class Proc>
Proc Find_Export(const char *name) {
    const HMODULE companion = g_hLogLibrary;
    return companion ? reinterpret_cast<Proc>(GetProcAddress(companion, name)) : nullptr;
}

// The companion is gone when the exit routine was faster.
void Queue(char *data, long size, long code, long broadcast) try {
    if (const QueueEntryProc queue_entry = g_pQueueEntry) queue_entry(data, size, code, broadcast);
} catch (...) {
}

// Terminated, and cut to what fits; the length, below 0 for what cannot be formatted.
__attribute__((format(printf, 3, 0))) int Format(char *out, int longest, const char *format,
                                                 va_list arguments) {
    if (!format) return -1;
    const int length = std::vsnprintf(out, static_cast<std::size_t>(longest) + 1, format, arguments);
    return length < longest ? length : longest;
}

__attribute__((format(printf, 1, 0))) void Queue_Standard_Entry(const char *format, va_list arguments) {
    char text[Longest_Entry + 1];
    const int length = Format(text, Longest_Entry, format, arguments);
    if (length >= 0) Queue(text, length + 1, 0, Log_Entry);
}

__attribute__((format(printf, 1, 0))) void Queue_Debug_Entry(const char *format, va_list arguments) {
    char raw[Longest_Raw_Text + 2]; // with room for the line feed
    const int length = Format(raw, Longest_Raw_Text, format, arguments);
    if (length < 0) return;
    char text[Longest_Debug_Entry + 1] = {};
    const int wrapped =
        std::snprintf(text, sizeof text, "<font color=red> <b>DEBUG MESSAGE:</b></font>&nbsp%s", raw);
    Queue(text, (wrapped < Longest_Debug_Entry ? wrapped : Longest_Debug_Entry) + 1, 0, Log_Entry);
    std::strcpy(raw + length, "\n");
    OutputDebugStringA(raw);
}

bool Wait_Until_No_Other_Thread_Calls() {
    const DWORD start = GetTickCount();
    while (Calls_Under_Way != Calls_Of_This_Thread) {
        if (GetTickCount() - start >= Wait_For_Calls) return false;
        Sleep(1);
    }
    return true;
}

} // namespace

long Add_Message_Client(long first, MessageCallback callback, void *context, bool fourth, void **client) try {
    const CallUnderWay call;
    if (!Log_Library_Ready()) return -1;
    const auto get_messages = Find_Export<GetMessagesProc>("Get_Messages");
    return get_messages ? get_messages(first, callback, context, fourth, client) : -1;
} catch (...) {
    return -1;
}

void Remove_Message_Client(void *client) try {
    const CallUnderWay call;
    if (const auto stop_messages = Find_Export<StopMessagesProc>("Stop_Messages")) stop_messages(client);
} catch (...) {
}

void Broadcast_Message(long code, const char *data, long size) {
    const CallUnderWay call;
    if (Log_Library_Ready()) Queue(const_cast<char *>(data), size, code, Broadcast);
}

void Run_Message_Cleanup_Thread() try {
    const CallUnderWay call;
    if (!Log_Library_Ready()) return;
    if (const auto run_cleanup = Find_Export<RunCleanupProc>("Run_Cleanup_Thread")) run_cleanup();
} catch (...) {
}

void Std_Log_Entry(const char *format, ...) {
    const CallUnderWay call;
    if (!Log_Library_Ready()) return;
    va_list arguments;
    va_start(arguments, format);
    Queue_Standard_Entry(format, arguments);
    va_end(arguments);
}

void Debug_Log_Entry(const char *format, ...) {
    const CallUnderWay call;
    if (!Log_Library_Ready() || !g_bDebugLogging) return;
    va_list arguments;
    va_start(arguments, format);
    Queue_Debug_Entry(format, arguments);
    va_end(arguments);
}

// A thread that is in the companion, this one too where the process was ended from there, keeps it loaded. In
// a forked process there is nobody to wait for, and what was loaded is not its own to give back.
void Release_Log_Library() {
    Is_Over = true;
    g_pQueueEntry = nullptr;
    if (Loading_Process != GetCurrentProcessId()) return;
    const bool quiet = Wait_Until_No_Other_Thread_Calls();
    g_pQueueEntry = nullptr; // of a load that was under way
    const HMODULE companion = g_hLogLibrary.exchange(nullptr);
    if (companion && quiet && Calls_Of_This_Thread == 0) FreeLibrary(companion);
}
