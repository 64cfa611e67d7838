// Eight processes that use all the machine has at once, one of them killed every tenth of a second and
// started anew: nobody waits long, nothing that was told is lost, and what is shared is whole at the end.

#include <tests/faults/kill_board.h>
#include <tests/shared_state/raw_atom_table.h>
#include <tests/support/fault_points.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <tools/command.h>

#include <kelmara/shared_state/instances.h>
#include <platform/kernel.h>
#include <platform/machine_contents.h>

#include <csignal>
#include <memory>
#include <random>
#include <unistd.h>

namespace {

constexpr unsigned Longest_Wait = 1000, Patience = 10000; // milliseconds
constexpr unsigned Fewest_Operations = 5;                 // of all in a millisecond

unsigned Seed() {
    const char *wanted = std::getenv("KELMARA_FAULT_SEED");
    return wanted ? static_cast<unsigned>(std::stoul(wanted)) : std::random_device{}();
}

/// Of a key and all below it.
std::string Contents_Of(const std::string &path) {
    const TestKey key(path);
    std::string contents = path + ":";
    for (const std::string &value : key.Values()) contents += " " + value + "=" + key.Get(value);
    for (const std::string &name : key.Subkeys()) contents += "\n" + Contents_Of(path + "\\" + name);
    return contents;
}

class KilledWorkers : public RegistryTest {
  protected:
    void SetUp() override {
        Instance_Available("", ""); // the table stays open
        RegistryTest::SetUp();
    }
    void Start(int worker) {
        processes[worker].reset();
        processes[worker] = std::make_unique<SecondProcess>(
            "kill_worker", std::vector<std::string>{board_path, std::to_string(worker),
                                                    std::to_string(random()), std::to_string(getpid())});
    }
    void Kill(int worker) {
        board->Note_Wait(worker);
        processes[worker]->Kill();
        EXPECT_EQ(processes[worker]->Wait(), -SIGKILL) << "it ended by itself";
        board->workers[worker].under_way = 0;
        EXPECT_EQ(processes[worker]->Errors(), "");
    }
    void Expect_All_At_Work() {
        for (const KillBoard::Worker &worker : board->workers) {
            const unsigned before = worker.operations, start = Milliseconds();
            while (worker.operations == before && Milliseconds() - start < Patience) Sleep(1);
            EXPECT_NE(worker.operations, before) << "in operation " << worker.under_way;
        }
    }
    void Expect_All_Told() {
        const TestKey key("Kill test");
        for (int i = 0; i < Workers; ++i) {
            const unsigned told = board->workers[i].told;
            const std::string value = key.Get("worker " + std::to_string(i));
            EXPECT_TRUE(value == std::to_string(told) || value == std::to_string(told + 1)) << value << told;
        }
    }
    /// What was there is read anew, the workers' keys have nothing in them, and what killed writers left
    /// behind the last whole record, or beside the file, is all that there is to mend.
    void Expect_Whole_Registry() {
        const std::string before = Contents_Of("Kill test");
        Reopen();
        EXPECT_EQ(Contents_Of("Kill test"), before);
        for (const std::string &name : TestKey("Kill test").Subkeys())
            EXPECT_EQ(Contents_Of("Kill test\\" + name), "Kill test\\" + name + ":");
        MachineRegistry registry = {};
        EXPECT_EQ(Look_At_Registry(&registry), ERROR_SUCCESS);
        EXPECT_EQ(registry.damaged, 0u);
        EXPECT_EQ(Mend_Registry(), ERROR_SUCCESS);
        EXPECT_EQ(Look_At_Registry(&registry), ERROR_SUCCESS);
        EXPECT_TRUE(registry.torn == 0 && !registry.left_aside)
            << registry.torn << " torn, aside: " << registry.left_aside;
        EXPECT_EQ(Contents_Of("Kill test"), before);
    }
    void Expect_Well() {
        SecondProcess check("machine_check");
        EXPECT_EQ(check.Hear(), "nothing is wrong");
        EXPECT_EQ(check.Wait(), 0);
        const auto of_others = [](const MachineBlock *block, void *left) {
            if (block->process_id != GetCurrentProcessId())
                *static_cast<std::string *>(left) += block->file + std::string(" ");
            return true;
        };
        std::string left;
        EXPECT_TRUE(Visit_Machine_Blocks(of_others, &left));
        EXPECT_EQ(left, "");
    }
    void Expect_Nobody_Left() {
        for (int i = 0; i < Workers; ++i)
            EXPECT_FALSE(Instance_Available(("worker " + std::to_string(i)).c_str(), nullptr));
        const auto windows = [](HWND window, LPARAM left) {
            return *reinterpret_cast<std::string *>(left) += Title_Of(window), TRUE;
        };
        std::string left;
        EnumChildWindows(nullptr, windows, reinterpret_cast<LPARAM>(&left));
        EXPECT_EQ(left, "");
    }
    void Expect_Locks_Free() {
        for (int i = 0; i < Shared_Locks; ++i) {
            const HANDLE lock = CreateMutexA(nullptr, FALSE, ("kill test " + std::to_string(i)).c_str());
            const DWORD result = WaitForSingleObject(lock, Longest_Wait);
            EXPECT_TRUE(result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) << result;
            ReleaseMutex(lock);
            CloseHandle(lock);
        }
    }

    const std::string board_path = machine.Path("board");
    SharedBoard board{board_path};
    const unsigned seed = Seed();
    std::mt19937 random{seed};
    std::unique_ptr<SecondProcess> processes[Workers];
};

TEST_F(KilledWorkers, LoseNothingAndHoldNobodyUp) {
    const unsigned length = At_Full_Size() ? 600000 : 3000;
    Print_Figure("seed of the kill test", seed);
    const RawAtomTable raw;
    CAtomTable atoms;
    ASSERT_EQ(atoms.Initialize("KILL-TEST"), 0);
    for (int i = 0; i < Workers; ++i) Start(i);
    unsigned long kills = 0, operations = 0, longest = 0;
    for (const unsigned start = Milliseconds(); Milliseconds() - start < length; ++kills) {
        Sleep(100);
        const int killed = static_cast<int>(random() % Workers);
        Kill(killed);
        Start(killed);
    }
    Expect_All_At_Work();
    for (int i = 0; i < Workers; ++i) Kill(i);

    EXPECT_FALSE(atoms.Delete_Atom(1, 1)) << "who takes the lock next puts the table in order";
    raw.Expect_Whole();
    Expect_All_Told();
    Expect_Whole_Registry();
    Expect_Nobody_Left();
    Expect_Locks_Free();
    Expect_Well();
    for (const KillBoard::Worker &worker : board->workers) {
        EXPECT_STREQ(worker.fault, "");
        EXPECT_LE(worker.longest, Longest_Wait) << "in operation " << worker.longest_is;
        operations += worker.operations;
        longest = std::max<unsigned long>(longest, worker.longest);
    }
    EXPECT_GT(operations, length * Fewest_Operations);
    Print_Figure("kills survived by those who run on", kills);
    Print_Figure("operations meanwhile", operations);
    Print_Figure("longest wait in milliseconds", longest);
}

} // namespace

// A process that starts now: what killed ones left in shared memory goes by its start.
SECOND_PROCESS(machine_check) {
    tools::CommandTree tree;
    tools::Add_All(tree);
    const char *const arguments[] = {"kelmara", "machine", "check"};
    return tree.Run(3, arguments);
}
