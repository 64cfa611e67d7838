#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>

#include <tests/shared_state/raw_atom_table.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <cstring>
#include <random>

namespace {

constexpr char Table_Name[] = "TEST-ATOMS";

class AtomTables : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        table = std::make_unique<CAtomTable>();
        ASSERT_EQ(table->Initialize(Table_Name), 0);
        raw = std::make_unique<RawAtomTable>();
    }
    void TearDown() override {
        if (raw) raw->Expect_Whole();
        raw.reset();
        table.reset();
        MachineTest::TearDown();
    }

    long Add(long group, long id, const std::string &text = "") {
        return table->New_Atom(group, id, text.data(), static_cast<long>(text.size()));
    }
    std::string Data(long group, long id) {
        char bytes[257] = {};
        return table->Get_Atom_Data(group, id, bytes, 256) ? bytes : "(none)";
    }
    std::vector<long> Ids(long group) {
        std::vector<long> ids;
        const auto append = [](long, long id, char *, long user) {
            reinterpret_cast<std::vector<long> *>(user)->push_back(id);
            return true;
        };
        EXPECT_FALSE(table->Iterate_Atoms(group, append, reinterpret_cast<long>(&ids)));
        return ids;
    }

    std::unique_ptr<CAtomTable> table;
    std::unique_ptr<RawAtomTable> raw;
};

TEST_F(AtomTables, BeginEmptyAndKeepAtomsByKeyAndBySlot) {
    EXPECT_EQ(raw->header->Count, 0);
    EXPECT_EQ(Add(7, -1, "one"), 0);
    EXPECT_EQ(Add(7, 2, "two"), 1);
    EXPECT_EQ(Add(7, 2, "again"), -183);
    EXPECT_EQ(Data(7, 2), "two");
    EXPECT_EQ(Data(2, 7), "(none)");
    char bytes[8] = "-------";
    EXPECT_TRUE(table->Get_Atom_Data(1, bytes, 2));
    EXPECT_STREQ(bytes, "tw-----");
    EXPECT_TRUE(table->Get_Atom_Data(1, nullptr, 100)) << "a test of existence";
    EXPECT_TRUE(table->Set_Atom_Data(7, 2, "T", 1));
    EXPECT_TRUE(table->Set_Atom_Data(0, "ONE MORE", 9));
    EXPECT_EQ(Data(7, 2), "Two");
    EXPECT_EQ(Data(7, -1), "ONE MORE");
    for (const long slot : {-1L, 2L, 256L, 0x7FFFFFFFL}) {
        EXPECT_FALSE(table->Get_Atom_Data(slot, bytes, 1)) << slot;
        EXPECT_FALSE(table->Set_Atom_Data(slot, bytes, 1)) << slot;
        EXPECT_FALSE(table->Delete_Atom(slot)) << slot;
    }
}

TEST_F(AtomTables, MoveAtMost256BytesAndNoneBelowZero) {
    EXPECT_EQ(Add(1, 1, std::string(300, 'x')), 0);
    EXPECT_EQ(raw->records[1].Group, 0) << "nothing went beyond the record";
    char bytes[300];
    std::memset(bytes, '-', sizeof bytes);
    EXPECT_TRUE(table->Get_Atom_Data(1, 1, bytes, 300));
    EXPECT_EQ(std::string(bytes, 300), std::string(256, 'x') + std::string(44, '-'));
    EXPECT_TRUE(table->Set_Atom_Data(1, 1, std::string(300, 'y').c_str(), 300));
    EXPECT_EQ(raw->records[1].Slot, 1);
    EXPECT_TRUE(table->Get_Atom_Data(0L, bytes, -5));
    EXPECT_EQ(bytes[0], 'x');
    EXPECT_TRUE(table->Set_Atom_Data(0L, "z", -1));
    EXPECT_EQ(Data(1, 1), std::string(256, 'y'));
    // A record is not cleared: an atom without data of its own holds what lay there.
    EXPECT_TRUE(table->Delete_Atom(1, 1));
    for (long id = 1; id < 256; ++id) ASSERT_EQ(Add(2, id), id);
    EXPECT_EQ(table->New_Atom(3, 3, nullptr, 10), 0);
    EXPECT_EQ(Data(3, 3), std::string(256, 'y'));
}

TEST_F(AtomTables, RefuseThe257thAndUseSlotsInTurn) {
    for (long id = 0; id < 256; ++id) ASSERT_EQ(Add(1, id, std::to_string(id)), id);
    EXPECT_EQ(Add(1, 256), -1);
    for (long id = 0; id < 256; ++id) ASSERT_EQ(Data(1, id), std::to_string(id));
    for (const long id : {200L, 0L, 255L, 3L}) { // from the middle, the head and the tail
        EXPECT_TRUE(table->Delete_Atom(1, id));
        raw->Expect_Whole();
    }
    for (const long slot : {200L, 0L, 255L, 3L})
        EXPECT_EQ(Add(2, slot), slot) << "first released, first used";
    EXPECT_EQ(Ids(2), (std::vector<long>{200, 0, 255, 3}));
}

TEST_F(AtomTables, AreWalkedByGroupInOrderAndMayChangeMeanwhile) {
    for (long id = 0; id < 6; ++id) Add(id % 2, id);
    EXPECT_EQ(Ids(0), (std::vector<long>{0, 2, 4}));
    EXPECT_EQ(Ids(9), std::vector<long>{});
    static std::vector<long> seen;
    seen.clear();
    const auto until_3 = [](long, long id, char *, long) {
        seen.push_back(id);
        return id != 3;
    };
    table->Iterate_Atoms(1, until_3, 0);
    EXPECT_EQ(seen, (std::vector<long>{1, 3})) << "ended by its callback";
    seen.clear();
    const auto change = [](long slot, long id, char *data, long user) {
        auto *inner = reinterpret_cast<CAtomTable *>(user);
        seen.push_back(id);
        inner->Set_Atom_Data(slot, data, 256); // from the atom into itself
        if (id == 0) inner->Delete_Atom(0, 2); // the next one of the group
        inner->Delete_Atom(slot);
        return true;
    };
    table->Iterate_Atoms(0, change, reinterpret_cast<long>(table.get()));
    EXPECT_EQ(seen, (std::vector<long>{0, 4})) << "what was deleted meanwhile is not shown";
    EXPECT_EQ(Ids(1), (std::vector<long>{1, 3, 5}));
    const auto throwing = [](long, long, char *, long) -> bool { throw 1; };
    EXPECT_THROW(table->Iterate_Atoms(1, throwing, 0), int);
    EXPECT_TRUE(table->Delete_Atom(1, 5)) << "an exception gives the lock up";
}

TEST_F(AtomTables, SayWhyTheyCannotBeHad) {
    CAtomTable other;
    char byte = 'x';
    EXPECT_EQ(other.Initialize(std::string(250, 'n').c_str()), ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(other.New_Atom(1, 1, &byte, 1), -1);
    EXPECT_EQ(other.Initialize(std::string(249, 'n').c_str()), 0);
    EXPECT_EQ(other.New_Atom(1, 1, &byte, 1), 0) << "one block for all names";
    const HANDLE taken = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 8, "BAD-MUTEX");
    EXPECT_EQ(other.Initialize("BAD"), -1) << "the lock's name is another kind of object's";
    CloseHandle(taken);
}

TEST_F(AtomTables, KeepTheirAtomsWhenAttachedAnewAndCopied) {
    Add(1, 1, "kept");
    raw.reset();
    EXPECT_EQ(table->Initialize(Table_Name), 0) << "by the only one that has the block";
    EXPECT_EQ(Data(1, 1), "kept");
    EXPECT_EQ(table->Initialize(std::string(250, 'n').c_str()), ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(Data(1, 1), "kept");
    raw = std::make_unique<RawAtomTable>();
    CAtomTable assigned;
    {
        const CAtomTable copy(*table);
        assigned = copy;
    }
    EXPECT_TRUE(assigned.Get_Atom_Data(1, 1, nullptr, 0));
    EXPECT_EQ(Data(1, 1), "kept");
}

TEST_F(AtomTables, RefuseABlockThatIsTooSmall) {
    raw.reset();
    table = std::make_unique<CAtomTable>();
    const HANDLE small =
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 1000, "DS-ATOM-TABLE-HI-MOM");
    EXPECT_EQ(table->Initialize(Table_Name), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Add(1, 1), -1);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, "TEST-ATOMS-MUTEX");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << "the lock stays in the object";
    EXPECT_EQ(Get_Mutex(mutex, 0), 0) << "and is not held";
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    CloseHandle(small);
    EXPECT_EQ(table->Initialize(Table_Name), 0);
}

SECOND_PROCESS(atom_user) {
    CAtomTable table;
    if (table.Initialize(Table_Name) != 0) return 1;
    char data[256] = {};
    process.Tell(table.Get_Atom_Data(1, 1, data, sizeof data) ? data : "(none)");
    process.Tell(std::to_string(table.New_Atom(1, 2, "second", 7)));
    process.Hear();
    return 0;
}

TEST_F(AtomTables, AreOneForAllProcesses) {
    Add(1, 1, "first");
    SecondProcess second("atom_user");
    EXPECT_EQ(second.Hear(), "first") << "it doesn't wipe what is there";
    EXPECT_EQ(second.Hear(), "1");
    EXPECT_EQ(Data(1, 2), "second");
    // The block outlives the process that made it, and goes with the last one.
    raw.reset();
    table.reset();
    SecondProcess third("atom_user");
    EXPECT_EQ(third.Hear(), "first");
    EXPECT_EQ(third.Hear(), "-183");
    EXPECT_EQ(second.Wait(), 0);
    third.Kill();
    third.Wait();
    SecondProcess fourth("atom_user");
    EXPECT_EQ(fourth.Hear(), "(none)");
}

SECOND_PROCESS(atom_shuffler) {
    CAtomTable table;
    if (table.Initialize(Table_Name) != 0) return 1;
    std::mt19937 random(static_cast<unsigned>(std::stoi(process.Arguments().at(0))));
    for (int rounds = 5000; rounds > 0; --rounds) {
        const long id = static_cast<long>(random() % 400);
        const auto choice = random() % 4;
        if (choice < 2) table.New_Atom(1, id, reinterpret_cast<const char *>(&id), sizeof id);
        if (choice == 2) table.Delete_Atom(1, id);
        if (choice == 3) table.Delete_Atom(id % 256);
    }
    return 0;
}

TEST_F(AtomTables, StandEightProcessesAtOnce) {
    std::vector<std::unique_ptr<SecondProcess>> shufflers;
    for (int i = 0; i < 8; ++i) {
        const std::vector<std::string> seed = {std::to_string(i)};
        shufflers.push_back(std::make_unique<SecondProcess>("atom_shuffler", seed));
    }
    for (const auto &shuffler : shufflers) EXPECT_EQ(shuffler->Wait(), 0) << shuffler->Errors();
    for (const long slot : raw->Chain()) {
        long id;
        std::memcpy(&id, raw->records[slot].Data, sizeof id);
        EXPECT_EQ(id, raw->records[slot].Id);
    }
}

} // namespace
