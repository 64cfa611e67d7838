// What the start of a program costs with a full table of instances, all of which live.

#include <benchmarks/measure.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <cstring>
#include <ctime>
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

// A program that fills the table with its windows, and waits for its user.
int Fill_The_Table() {
    for (long i = 0; i < Instance_Capacity; ++i)
        if (!First_Instance(Key(i).c_str(), "main", New_Window(Key(i)))) return 1;
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

void Let_A_Tenth_Of_A_Millisecond_Pass() {
    timespec start, now;
    clock_gettime(CLOCK_MONOTONIC, &start);
    do {
        clock_gettime(CLOCK_MONOTONIC, &now);
    } while ((now.tv_sec - start.tv_sec) * 1000000000LL + (now.tv_nsec - start.tv_nsec) < 100000);
}

void Measure(HWND window) {
    measure::Heading("instances, 49 live ones (peer: 100 microseconds)");
    const std::string last = Key(Instance_Capacity - 1);
    measure::Compare(
        "First_Instance, the last one's keys",
        MEASURED { measure::Keep(First_Instance(last.c_str(), "main", window)); },
        MEASURED { Let_A_Tenth_Of_A_Millisecond_Pass(); }, 1.0);
    measure::Compare(
        "First_Instance, new keys", MEASURED { measure::Keep(First_Instance("new", "main", window)); },
        MEASURED { Let_A_Tenth_Of_A_Millisecond_Pass(); }, 1.0);
    measure::Compare(
        "Instance_Available, the last one's keys",
        MEASURED { measure::Keep(Instance_Available(last.c_str(), nullptr)); },
        MEASURED { Let_A_Tenth_Of_A_Millisecond_Pass(); }, 1.0);
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::strcmp(argv[1], "fill") == 0) return Fill_The_Table();
    std::string folder = "/tmp/kelmara-benchmark-XXXXXX";
    if (!mkdtemp(folder.data()) || !Enter_Machine(folder.c_str())) return 1;
    setenv("KELMARA_MACHINE", folder.c_str(), 1);
    measure::Use_Plain_Memory();
    const HANDLE other = OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(Start_The_Other()));
    Measure(New_Window("The new one"));
    TerminateProcess(other, 0);
    WaitForSingleObject(other, INFINITE);
    Remove_Machine(folder.c_str());
    return 0;
}
