#include <kelmara/shared_state/wait_window.h>

#include <kelmara/shared_state/calls_under_way.h>
#include <kelmara/shared_state/companion_path.h>
#include <kelmara/shared_state/wait_library.h>

#include <platform/kernel.h>

namespace {

using CommandProc = void (*)();
using ShowProc = void (*)(long show);

constexpr DWORD Wait_For_Calls = 2000; // milliseconds

constinit std::atomic<HMODULE> g_hWaitLibrary{nullptr};
constinit std::atomic<bool> Is_Over{false}; // the exit routine has run
constinit std::atomic<DWORD> Loading_Process{0};
constinit CallsUnderWay Calls;
[[gnu::tls_model("initial-exec")]] constinit thread_local long Calls_Of_This_Thread = 0;

/// Stands in each call: while there is one the companion is not unloaded.
class CallUnderWay {
  public:
    CallUnderWay() : m_Call(Calls) { ++Calls_Of_This_Thread; }
    ~CallUnderWay() { --Calls_Of_This_Thread; }
    CallUnderWay(const CallUnderWay &) = delete;
    CallUnderWay &operator=(const CallUnderWay &) = delete;

  private:
    const CallsUnderWay::Call m_Call;
};

bool Load_Wait_Library() {
    if (g_hWaitLibrary) return true;
    char path[Companion_Path_Size] = {};
    if (Is_Over || !Read_Companion_Path("Wait", path)) return false;
    Loading_Process = GetCurrentProcessId();
    const HMODULE companion = LoadLibraryA(path);
    HMODULE before = nullptr;
    if (companion && !g_hWaitLibrary.compare_exchange_strong(before, companion)) FreeLibrary(companion);
    return g_hWaitLibrary != nullptr;
}

template <class Proc, class... Arguments>
void Call_Export(const char *name, Arguments... arguments) try {
    const HMODULE companion = g_hWaitLibrary;
    const auto proc = companion ? reinterpret_cast<Proc>(GetProcAddress(companion, name)) : nullptr;
    if (proc) proc(arguments...);
} catch (...) {
}

} // namespace

void Open_Kelmara_Wait_Window() {
    const CallUnderWay call;
    if (Load_Wait_Library()) Call_Export<CommandProc>("Startup");
}

void Close_Kelmara_Wait_Window() {
    const CallUnderWay call;
    if (Load_Wait_Library()) Call_Export<CommandProc>("Finished");
}

void Show_Kelmara_Wait_Window(bool show) {
    const CallUnderWay call;
    Call_Export<ShowProc>("Show", show ? 1L : 0L);
}

// A call that has begun to load goes on to do so: its companion is taken in here all the same. This thread is
// in a call itself where the process was ended from the companion. A forked process has neither the threads
// nor the window.
void Release_Wait_Library() {
    Is_Over = true;
    if (Loading_Process != GetCurrentProcessId()) return;
    const bool quiet = Calls.Are_Over(Wait_For_Calls, Calls_Of_This_Thread) && Calls_Of_This_Thread == 0;
    if (!g_hWaitLibrary || !quiet) return;
    Close_Kelmara_Wait_Window();
    const HMODULE companion = g_hWaitLibrary.exchange(nullptr);
    if (Calls.Are_Over(0)) FreeLibrary(companion);
}
