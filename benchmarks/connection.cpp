// How soon a window hears of a connection: from the event's set to the message in its queue, beside two
// bare threads that wake each other; and what two monitors at rest cost.

#include <benchmarks/measure.h>
#include <benchmarks/two_threads.h>

#include <kelmara/connectivity/connection_utility.h>
#include <reference_suite/installer/install_suite.h>

#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <ctime>
#include <filesystem>
#include <string>

namespace {

class Monitored : public CConnectionUtility {
  public:
    using CConnectionUtility::m_Connect_Event;
};

long long Nanoseconds(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

void Measure(Monitored &utility) {
    const HWND window =
        CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    utility.Set_Config("Home");
    utility.Monitor_Connections(window);
    utility.Monitor_Disconnections(window);
    const HANDLE event = utility.m_Connect_Event;
    measure::TwoThreads threads;
    measure::Heading("connection", "two threads that wake each other");
    measure::Compare_Calls(
        "event set, until the message is there",
        MEASURED {
            MSG message;
            SetEvent(event);
            GetMessageA(&message, window, Connection_Message, Connection_Message);
            while (WaitForSingleObject(event, 0) == WAIT_OBJECT_0) Sleep(0); // it is reset behind the post
        },
        MEASURED { threads.There_And_Back(); }, 50);
    const long long before = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    Sleep(2000);
    const long long after = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    measure::Report_Alone("two monitors at rest, a second of it", static_cast<double>(after - before) / 2, 1,
                          1e6);
    DestroyWindow(window);
}

} // namespace

int main() {
    std::string folder = "/tmp/kelmara-benchmark-XXXXXX";
    if (!mkdtemp(folder.data()) || !Enter_Machine(folder.c_str())) return 1;
    measure::Use_Plain_Memory();
    const auto build = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
    if (const std::string problem = Install_Suite(build / "suite"); !problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        return 1;
    }
    CoInitialize(nullptr);
    {
        Monitored utility;
        Measure(utility);
    }
    CoUninitialize();
    Remove_Machine(folder.c_str());
    return 0;
}
