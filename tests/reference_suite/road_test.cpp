#include <reference_suite/components/server/suite_server.h>

#include <tests/support/built_modules.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <csignal>
#include <cstdlib>
#include <unistd.h>

namespace {

SECOND_PROCESS(walking) {
    const std::string road = Suite_Module("../bin/road"), &folder = process.Arguments().back();
    execl(road.c_str(), "road", folder.c_str(), nullptr);
    return 127;
}

TEST(Road, TakesItsServerAlongWhenItIsKilled) {
    for (const int signal : {SIGTERM, SIGKILL}) {
        const TestMachine machine;
        const std::string folder = machine.Path("road");
        SecondProcess walking("walking", {folder});
        std::string line;
        for (int i = 0; i < 500 && line.find("current configuration") == line.npos; ++i)
            line = walking.Hear();
        ASSERT_FALSE(line.empty()) << walking.Wait() << walking.Errors();
        ASSERT_TRUE(Enter_Machine(folder.c_str()));
        const HANDLE mutex = CreateMutexA(nullptr, FALSE, Server_Mutex);
        EXPECT_EQ(WaitForSingleObject(mutex, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "it serves";
        kill(walking.Id(), signal);
        const DWORD taken = WaitForSingleObject(mutex, 5000);
        EXPECT_TRUE(taken == WAIT_OBJECT_0 || taken == WAIT_ABANDONED) << "the server lives on";
        CloseHandle(mutex);
        EXPECT_EQ(walking.Wait(), -signal);
        Remove_Machine(folder.c_str());
    }
}

} // namespace
