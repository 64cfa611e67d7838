// A process killed at any instruction of a change leaves the table as it was before or as it is after.

#include <tests/shared_state/raw_atom_table.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>
#include <random>
#include <sched.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int Kills = 100; // a fork takes its time with the sanitizer's memory
#else
constexpr int Kills = 1000;
#endif

constexpr char Table_Name[] = "KILL-ATOMS";
constexpr char Data[] = "whole";

bool New(CAtomTable &table, long id) {
    return table.New_Atom(1, id, Data, sizeof Data) >= 0;
}

/// A child that makes atom 9 and then deletes atom 2, one instruction at a time.
class SteppedChild {
  public:
    explicit SteppedChild(CAtomTable &table) {
        id_ = fork();
        if (id_ == 0) {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            _exit(New(table, 9) && table.Delete_Atom(1, 2) ? 0 : 1);
        }
        waitpid(id_, &status_, 0);
    }
    /// False when it has ended.
    bool Step() {
        if (ptrace(PTRACE_SINGLESTEP, id_, nullptr, nullptr) != 0) return false;
        waitpid(id_, &status_, 0);
        return WIFSTOPPED(status_);
    }
    bool Ended_Well() const { return WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }

  private:
    pid_t id_ = -1;
    int status_ = 0;
};

class KilledAtomUsers : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        ASSERT_EQ(table.Initialize(Table_Name), 0);
        raw.emplace();
        for (const long id : {1L, 2L, 3L}) ASSERT_TRUE(New(table, id)); // slots 0, 1, 2
    }
    void TearDown() override {
        raw.reset();
        table = CAtomTable();
        MachineTest::TearDown();
    }

    std::string Ids() {
        std::string ids;
        const auto append = [](long, long id, char *data, long user) {
            *reinterpret_cast<std::string *>(user) +=
                std::to_string(id) + (std::strcmp(data, Data) ? "!" : "");
            return true;
        };
        table.Iterate_Atoms(1, append, reinterpret_cast<long>(&ids));
        return ids;
    }

    CAtomTable table;
    std::optional<RawAtomTable> raw;
};

// What a kill leaves is what the block holds at that instruction: kept for each, and given to the next owner.
TEST_F(KilledAtomUsers, LeaveTheTableWholeAtEveryInstruction) {
    std::vector<std::string> left;
    SteppedChild child(table);
    while (child.Step()) {
        std::string block(reinterpret_cast<const char *>(raw->header), Atom_Block_Size);
        if (left.empty() || block != left.back()) left.push_back(std::move(block));
    }
    ASSERT_TRUE(child.Ended_Well());
    ASSERT_GT(left.size(), 20u) << "a change has many steps";

    std::set<std::string> seen;
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::memcpy(raw->header, left[i].data(), Atom_Block_Size);
        seen.insert(Ids());
        raw->Expect_Whole();
        if (HasFatalFailure()) FAIL() << "after change " << i << " of " << left.size();
    }
    EXPECT_EQ(seen, (std::set<std::string>{"123", "1239", "139"}));
}

TEST_F(KilledAtomUsers, GiveUpTheLockAThousandTimesInARow) {
    std::mt19937 random(1);
    for (int kills = 0; kills < Kills; ++kills) {
        const pid_t child = fork();
        while (child == 0) New(table, 9), table.Delete_Atom(1, 9);
        const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 600);
        while (std::chrono::steady_clock::now() < until) sched_yield();
        kill(child, SIGKILL);
        // Taken while the child is dying, and again when it is dead.
        const long added = table.New_Atom(2, kills, Data, sizeof Data);
        waitpid(child, nullptr, 0);
        ASSERT_GE(added, 0) << "at kill " << kills;
        ASSERT_TRUE(table.Delete_Atom(2, kills));
        ASSERT_TRUE(Ids() == "123" || Ids() == "1239") << Ids();
        raw->Expect_Whole();
        if (HasFatalFailure()) return;
    }
}

SECOND_PROCESS(atom_churner) {
    CAtomTable table;
    if (table.Initialize(Table_Name) != 0) return 1;
    for (process.Tell("attached");;) New(table, 9), table.Delete_Atom(1, 9);
}

TEST_F(KilledAtomUsers, GiveUpTheLockOfATableThatTheyAttachedToThemselves) {
    for (int kills = 0; kills < 20; ++kills) {
        SecondProcess churner("atom_churner");
        ASSERT_EQ(churner.Hear(), "attached");
        Sleep(static_cast<DWORD>(kills) % 4);
        churner.Kill();
        ASSERT_TRUE(Ids() == "123" || Ids() == "1239") << Ids();
        raw->Expect_Whole();
    }
}

// The mark of a change that nobody finished, with the half-made states that a kill can leave.
TEST_F(KilledAtomUsers, ArePutRightByTheNextOwnerWhateverTheyLeft) {
    AtomTableHeader &header = *raw->header;
    AtomRecord *records = raw->records;
    const std::tuple<long *, long, const char *> damages[] = {
        {&header.Count, 77, "123"},      {&header.Tail, 12345, "123"},   {&records[2].Next, 1, "123"},
        {&records[2].Next, 5000, "123"}, {&records[40].InUse, 1, "123"}, // filled, and not yet linked
        {&records[1].InUse, 0, "13"},                                    // released, and not yet unlinked
        {&header.Head, -7, ""}};
    for (const auto &[place, value, ids] : damages) {
        *place = value;
        std::memset(header.FreeSlots, 0x7F, sizeof header.FreeSlots);
        records[0].Reserved = 1;
        EXPECT_EQ(Ids(), ids) << value;
        raw->Expect_Whole();
    }
    EXPECT_TRUE(New(table, 5));
    EXPECT_EQ(Ids(), "5");
}

// A block whose maker was killed before it was done, found while its holders still seem alive.
TEST_F(KilledAtomUsers, LeaveABlockThatTheNextOneMakesAnew) {
    raw.reset();
    table = CAtomTable();
    raw.emplace(); // zero-filled, not made by Initialize
    ASSERT_EQ(raw->header->FreeSlots[255], 0);
    EXPECT_EQ(table.Initialize(Table_Name), 0);
    EXPECT_TRUE(New(table, 1));
    raw->Expect_Whole();
}

} // namespace
