// What the start of a program costs with a full table of instances, all of which live, and as the table
// fills.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <spawn.h>
#include <string>
#include <unistd.h>

namespace {

constexpr long Counts[] = {1, 7, Instance_Capacity};

HWND New_Window(const std::string &title) {
    static WNDCLASSA window_class = {};
    window_class.lpfnWndProc = DefWindowProcA;
    window_class.lpszClassName = "Benchmark";
    RegisterClassA(&window_class);
    return CreateWindowExA(0, "Benchmark", title.c_str(), WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr,
                           nullptr);
}

std::string Key(long number) {
    return "Program " + std::to_string(number);
}

std::string Last_Window_File() {
    return std::string(std::getenv("KELMARA_MACHINE")) + "/last-window";
}

HANDLE More_Wanted() {
    return CreateEventA(nullptr, FALSE, FALSE, "Benchmark-More");
}

void Wait_For_The_User_Or(HANDLE event) {
    MSG message;
    while (MsgWaitForMultipleObjects(1, &event, FALSE, INFINITE, QS_ALLEVENTS) != WAIT_OBJECT_0)
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
}

// A program that fills the table with its windows, to the next count each time that it is asked, and waits
// for its user. It tells of the last window.
int Fill_The_Table() {
    const HANDLE more = More_Wanted();
    for (long made = 0;; Wait_For_The_User_Or(more)) {
        const long count = *std::ranges::upper_bound(Counts, made);
        for (; made < count; ++made) {
            const HWND window = New_Window(Key(made));
            if (made == Instance_Capacity - 1)
                std::ofstream(Last_Window_File()) << reinterpret_cast<std::uintptr_t>(window);
            if (!First_Instance(Key(made).c_str(), "main", window)) return 1;
        }
    }
}

pid_t Start_The_Other() {
    std::string words[] = {"benchmark_instances", "fill"};
    char *arguments[] = {words[0].data(), words[1].data(), nullptr};
    pid_t id = -1;
    posix_spawn(&id, "/proc/self/exe", nullptr, nullptr, arguments, environ);
    return id;
}

// The table is full behind it.
void Measure_Growth() {
    measure::Growth_Heading("instances");
    measure::Growth none("Instance_Available, none of n", 1.1),
        last("Instance_Available, the last of n", 0.2);
    measure::Growth first("First_Instance, the last of n", 0.2);
    const HWND window = New_Window("Another one");
    const HANDLE more = More_Wanted();
    for (const long count : Counts) {
        const std::string key = Key(count - 1);
        while (!Instance_Available(key.c_str(), "main")) Sleep(1);
        none.At(count, [] { measure::Keep(Instance_Available("new", "main")); });
        last.At(count, [&] { measure::Keep(Instance_Available(key.c_str(), "main")); });
        first.At(count, [&] { measure::Keep(First_Instance(key.c_str(), "main", window)); });
        if (count < Instance_Capacity) SetEvent(more);
    }
    CloseHandle(more);
    DestroyWindow(window);
}

HANDLE table_lock;

void Take_Lock_And_Give_It_Back() {
    WaitForSingleObject(table_lock, INFINITE);
    ReleaseMutex(table_lock);
}

/// What tells that another process's window lives, and that its program has started.
void Look_At(HWND window) {
    char title[256];
    DWORD process_id = 0;
    if (!IsWindow(window) || !GetWindowThreadProcessId(window, &process_id)) std::abort();
    const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, TRUE, process_id);
    WaitForInputIdle(process, 3000);
    CloseHandle(process);
    InternalGetWindowTextA(window, title, sizeof title);
    measure::Keep(title);
}

void Measure(HWND window, HWND last_window) {
    const std::string last = Key(Instance_Capacity - 1);
    const auto look = MEASURED {
        Take_Lock_And_Give_It_Back();
        Look_At(last_window);
    };
    measure::Heading("instances", "a lock, and one window looked at");
    measure::Compare(
        "First_Instance, the last of 49",
        MEASURED { measure::Keep(First_Instance(last.c_str(), "main", window)); }, look, 2.0);
    measure::Compare(
        "Instance_Available, the last of 49",
        MEASURED { measure::Keep(Instance_Available(last.c_str(), nullptr)); }, look, 2.0);
    measure::Heading("instances", "a lock taken and given back");
    measure::Compare(
        "First_Instance, none of 49", MEASURED { measure::Keep(First_Instance("new", "main", window)); },
        [] { Take_Lock_And_Give_It_Back(); }, 4.0);
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::strcmp(argv[1], "fill") == 0) return Fill_The_Table();
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    const HANDLE other = OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(Start_The_Other()));
    Measure_Growth();
    std::uintptr_t last = 0;
    std::ifstream(Last_Window_File()) >> last;
    table_lock = CreateMutexA(nullptr, FALSE, "Benchmark");
    Measure(New_Window("The new one"), reinterpret_cast<HWND>(last));
    TerminateProcess(other, 0);
    WaitForSingleObject(other, INFINITE);
    return 0;
}
