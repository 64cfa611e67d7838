// How soon a window hears of a connection: from the event's set to the message in its queue, beside two
// bare threads that wake each other; and what two monitors at rest cost.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>
#include <benchmarks/two_threads.h>

#include <kelmara/connectivity/connection_utility.h>
#include <reference_suite/installer/install_suite.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

class Monitored : public CConnectionUtility {
  public:
    using CConnectionUtility::m_Connect_Event;
};

/// What this process works in a second in which nothing happens.
void Measure_Rest() {
    std::vector<double> seconds(measure::Few_Rounds);
    for (double &worked : seconds) {
        const auto before = measure::ProcessorClock::now();
        Sleep(1000);
        worked = (measure::ProcessorClock::now() - before).count();
    }
    measure::Report_Alone("two monitors at rest, a second of it", measure::Median(seconds),
                          measure::Few_Rounds, 1e6);
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
    Measure_Rest();
    DestroyWindow(window);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
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
    return 0;
}
