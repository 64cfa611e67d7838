// What the start of a program costs with a full table of instances, all of which live.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <spawn.h>
#include <string>
#include <unistd.h>

namespace {

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

// A program that fills the table with its windows, tells of the last, and waits for its user.
int Fill_The_Table() {
    HWND window = nullptr;
    for (long i = 0; i < Instance_Capacity - 1; ++i)
        if (!First_Instance(Key(i).c_str(), "main", window = New_Window(Key(i)))) return 1;
    window = New_Window(Key(Instance_Capacity - 1));
    std::ofstream(Last_Window_File()) << reinterpret_cast<std::uintptr_t>(window);
    if (!First_Instance(Key(Instance_Capacity - 1).c_str(), "main", window)) return 1;
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    return 0;
}

pid_t Start_The_Other() {
    std::string words[] = {"benchmark_instances", "fill"};
    char *arguments[] = {words[0].data(), words[1].data(), nullptr};
    pid_t id = -1;
    posix_spawn(&id, "/proc/self/exe", nullptr, nullptr, arguments, environ);
    while (!Instance_Available(Key(Instance_Capacity - 1).c_str(), "main")) Sleep(1);
    return id;
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
    std::uintptr_t last = 0;
    std::ifstream(Last_Window_File()) >> last;
    table_lock = CreateMutexA(nullptr, FALSE, "Benchmark");
    Measure(New_Window("The new one"), reinterpret_cast<HWND>(last));
    TerminateProcess(other, 0);
    WaitForSingleObject(other, INFINITE);
    return 0;
}
