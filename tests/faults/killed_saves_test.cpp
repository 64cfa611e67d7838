// A process killed at any call of the host in the middle of a save: who starts next finds the old content or
// the new, and can save.

#include <tests/faults/save_machine.h>
#include <tests/support/fault_points.h>

#include <set>

namespace {

class KilledSaves : public ::testing::TestWithParam<SavePath> {
  protected:
    KilledSaves() : prepared(GetParam()) {}

    /// Where a save that nothing happens to stops: before and behind each call of the host.
    unsigned long Stops() const {
        const SaveMachine machine(prepared);
        TracedRun run([this] { return Save(); });
        unsigned long stops = 0;
        while (run.Next_Stop()) ++stops;
        EXPECT_EQ(run.Exit_Code(), 0);
        EXPECT_EQ(machine.Found(), "new");
        return stops;
    }
    std::string Found_After_Kill_At(unsigned long stop) const {
        const SaveMachine machine(prepared);
        {
            TracedRun run([this] { return Save(); });
            for (unsigned long passed = 0; passed < stop && run.Next_Stop(); ++passed) continue;
            run.Kill();
        }
        const std::string found = machine.Found();
        EXPECT_TRUE(machine.May_Leave(found, true)) << found << ", killed at stop " << stop;
        EXPECT_EQ(machine.Found_After_A_Save(), "new") << "killed at stop " << stop;
        return found;
    }
    int Save() const { return prepared.Path().save() ? 0 : 1; }

    const PreparedSave prepared;
};

TEST_P(KilledSaves, LeaveTheOldOrTheNewAtEveryCall) {
    const unsigned long stops = Stops(), stride = Stride(stops, 24, GetParam().Calls_To_Try());
    EXPECT_GT(stops, 20u) << "a save takes many calls";
    std::set<std::string> outcomes;
    unsigned long kills = 0;
    for (unsigned long stop = 1; stop < stops; stop += stride, ++kills)
        outcomes.insert(Found_After_Kill_At(stop));
    // Near the end all is done; no two runs have quite the same calls.
    for (unsigned long stop = stops - 1; !outcomes.count("new") && stop < stops + 20; ++stop, ++kills)
        outcomes.insert(Found_After_Kill_At(stop));
    EXPECT_TRUE(outcomes.count("new") && outcomes.count(GetParam().before))
        << ::testing::PrintToString(outcomes);
    Print_Figure((std::string("kills survived in a save: ") + GetParam().name).c_str(), kills);
}

INSTANTIATE_TEST_SUITE_P(Paths, KilledSaves, ::testing::ValuesIn(Save_Paths()), Name_Of);

} // namespace
