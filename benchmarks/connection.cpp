// How soon a window hears of a connection: from the event's set to the message in its queue, beside the 200
// microseconds that it may take; and what two monitors at rest cost.

#include <benchmarks/measure.h>

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

void Let_200_Microseconds_Pass() {
    const long long end = Nanoseconds(CLOCK_MONOTONIC) + 200000;
    while (Nanoseconds(CLOCK_MONOTONIC) < end) {
    }
}

void Measure(Monitored &utility) {
    const HWND window =
        CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    utility.Set_Config("Home");
    utility.Monitor_Connections(window);
    utility.Monitor_Disconnections(window);
    const HANDLE event = utility.m_Connect_Event;
    measure::Heading("connection (peer: 200 microseconds)");
    measure::Compare(
        "event set, until the message is there",
        MEASURED {
            MSG message;
            SetEvent(event);
            GetMessageA(&message, window, Connection_Message, Connection_Message);
            while (WaitForSingleObject(event, 0) == WAIT_OBJECT_0) Sleep(0); // it is reset behind the post
        },
        MEASURED { Let_200_Microseconds_Pass(); }, 1.0);
    const long long before = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    Sleep(3000);
    const long long after = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    std::printf("two monitors at rest: %lld microseconds of processor time a second\n",
                (after - before) / 3000);
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
