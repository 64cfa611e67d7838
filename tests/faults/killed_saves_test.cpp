// A process killed at any call of the host in the middle of a save: who starts next finds the old content or the
// new, and can save.

#include <tests/faults/save_machine.h>
#include <tests/support/fault_points.h>

#include <set>

namespace {

class KilledSaves : public ::testing::TestWithParam<SavePath> {
  protected:
    /// What is found after a kill at that stop; "" when the save had ended before.
    static std::string Found_After_Kill(const PreparedSave &prepared, int stop) {
        const SaveMachine machine(prepared);
        TracedRun run([&] { return prepared.Path().save() ? 0 : 1; });
        for (int passed = 0; passed < stop; ++passed) {
            if (run.Next_Stop()) continue;
            EXPECT_EQ(run.Exit_Code(), 0);
            EXPECT_EQ(machine.Found(), "new");
            return "";
        }
        run.Kill();
        const std::string found = machine.Found();
        EXPECT_TRUE(found == "new" || machine.Is_As_Before(found)) << found << ", killed at stop " << stop;
        EXPECT_EQ(machine.Found_After_A_Save(), "new") << "killed at stop " << stop;
        return found;
    }
};

TEST_P(KilledSaves, LeaveTheOldOrTheNewAtEveryCall) {
    const PreparedSave prepared(GetParam());
    std::set<std::string> outcomes;
    unsigned long kills = 0;
    const int step = At_Full_Size() ? 1 : 2; // every call, begun or ended by turns
    for (int stop = 1;; stop += step, ++kills) {
        const std::string found = Found_After_Kill(prepared, stop);
        if (found.empty()) break;
        outcomes.insert(found);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_TRUE(outcomes.count("new") && outcomes.count(GetParam().before));
    EXPECT_GT(kills * static_cast<unsigned long>(step), 20u) << "a save takes many calls";
    Print_Figure((std::string("kills survived in a save: ") + GetParam().name).c_str(), kills);
}

INSTANTIATE_TEST_SUITE_P(Paths, KilledSaves, ::testing::ValuesIn(Save_Paths()), Name_Of);

} // namespace
