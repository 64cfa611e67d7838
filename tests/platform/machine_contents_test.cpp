// The machine seen from outside.

#include <platform/machine_contents.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <platform/errors.h>
#include <platform/kernel.h>
#include <platform/machine.h>

#include <cstring>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using MachineContents = MachineTest;

template <class Seen>
std::vector<Seen> All(BOOL (*visit)(bool (*)(const Seen *, void *), void *)) {
    std::vector<Seen> all;
    const auto keep = [](const Seen *seen, void *context) {
        static_cast<std::vector<Seen> *>(context)->push_back(*seen);
        return true;
    };
    EXPECT_TRUE(visit(keep, &all));
    return all;
}

TEST_F(MachineContents, BlocksAreSeenWhileSomebodyHasThem) {
    EXPECT_TRUE(All(Visit_Machine_Blocks).empty());
    const HANDLE mapping =
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 10, "Seen \xFC");
    void *view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
    std::strcpy(static_cast<char *>(view), "content");
    const std::vector<MachineBlock> blocks = All(Visit_Machine_Blocks);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_STREQ(blocks[0].name, "Seen \xFC");
    EXPECT_EQ(blocks[0].kind, MACHINE_BLOCK_MAPPING);
    EXPECT_EQ(blocks[0].size, 10u);
    EXPECT_EQ(blocks[0].process_id, static_cast<DWORD>(getpid()));

    char copy[100] = {};
    EXPECT_EQ(Copy_Machine_Mapping("Seen \xFC", copy, sizeof copy), 10u);
    EXPECT_STREQ(copy, "content");
    EXPECT_EQ(Copy_Machine_Mapping("Other", copy, sizeof copy), 0u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    Leave_Machine();
    EXPECT_EQ(Copy_Machine_Mapping("Seen \xFC", copy, sizeof copy), 0u) << "nobody else has it";
    void *again = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
    EXPECT_STREQ(static_cast<char *>(again), "content") << "the handle stays usable";
    UnmapViewOfFile(again);
    UnmapViewOfFile(view);
    EXPECT_TRUE(All(Visit_Machine_Blocks).empty());
    CloseHandle(mapping);
}

TEST_F(MachineContents, ClassesAreOfferedUntilTheirProgramEnds) {
    EXPECT_TRUE(All(Visit_Machine_Classes).empty());
    SecondProcess lives("service"), dies("service");
    ASSERT_NE(lives.Hear() + dies.Hear(), "");
    dies.Kill();
    dies.Wait();
    const std::vector<MachineClass> classes = All(Visit_Machine_Classes);
    ASSERT_EQ(classes.size(), 2u);
    for (const MachineClass &each : classes) {
        EXPECT_EQ(each.offered != FALSE, each.process_id == static_cast<DWORD>(lives.Id()));
        EXPECT_EQ(each.class_id[0], '{');
        EXPECT_EQ(each.class_id[37], '}');
    }
    // The host does not show another network namespace the sockets of this one.
    const pid_t elsewhere = fork();
    if (elsewhere == 0) {
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) _exit(2);
        const std::vector<MachineClass> seen = All(Visit_Machine_Classes);
        _exit(seen.size() == 2 && seen[0].offered + seen[1].offered == 1 ? 0 : 1);
    }
    int status = 0;
    waitpid(elsewhere, &status, 0);
    EXPECT_NE(WEXITSTATUS(status), 1) << "2 where the host lets nobody leave";
    EXPECT_TRUE(Clear_Away_Ended_Classes());
    ASSERT_EQ(All(Visit_Machine_Classes).size(), 1u);
    EXPECT_TRUE(All(Visit_Machine_Classes)[0].offered);
}

} // namespace
