// A call of the host that fails in the middle of a save: who saves is told or the save is whole, what was there
// stands, and the next save works.

#include <tests/faults/save_machine.h>
#include <tests/support/fault_points.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int Short = -1;

struct HostFault {
    const char *name;
    std::vector<long> calls;
    int error; // or Short
};

const std::vector<HostFault> Host_Faults = {
    {"open, EMFILE", {SYS_open, SYS_openat}, EMFILE},
    {"open, EIO", {SYS_open, SYS_openat}, EIO},
    {"open, ENOSPC", {SYS_open, SYS_openat}, ENOSPC},
    {"read, EIO", {SYS_read, SYS_pread64}, EIO},
    {"read, EINTR", {SYS_read, SYS_pread64}, EINTR},
    {"short read", {SYS_read, SYS_pread64}, Short},
    {"write, ENOSPC", {SYS_write, SYS_pwrite64}, ENOSPC},
    {"write, EIO", {SYS_write, SYS_pwrite64}, EIO},
    {"write, EINTR", {SYS_write, SYS_pwrite64}, EINTR},
    {"short write", {SYS_write, SYS_pwrite64}, Short},
    {"flush, EIO", {SYS_fsync, SYS_fdatasync}, EIO},
    {"flush, ENOSPC", {SYS_fsync, SYS_fdatasync}, ENOSPC},
    {"flush, EINTR", {SYS_fsync, SYS_fdatasync}, EINTR},
    {"rename, EIO", {SYS_rename, SYS_renameat2, SYS_link}, EIO},
    {"rename, ENOSPC", {SYS_rename, SYS_renameat2, SYS_link}, ENOSPC},
    {"cut, EIO", {SYS_ftruncate64}, EIO},
    {"cut, EINTR", {SYS_ftruncate64}, EINTR},
    {"map, ENOMEM", {SYS_mmap2}, ENOMEM},
};

// The child's word that its first save is over, by a call that nobody else makes; how it went is the argument.
constexpr long Word_Of_The_End = SYS_getpgid;
constexpr int Saved = 4000001, Told = 4000002;

int Save_Twice(const SavePath &path) {
    const bool first = path.save();
    syscall(Word_Of_The_End, first ? Saved : Told);
    return path.save() ? 0 : 1;
}

class HostFaults : public ::testing::TestWithParam<SavePath> {
  protected:
    // False when the fault was not met.
    static bool Try(const PreparedSave &prepared, const HostFault &fault, unsigned long at, bool for_ever) {
        const SaveMachine machine(prepared);
        TracedRun run([&] { return Save_Twice(prepared.Path()); });
        // Who is interrupted tries again, so that for ever would be just that.
        const unsigned long last = !for_ever ? at : fault.error == EINTR ? at + 2 : ULONG_MAX;
        unsigned long seen = 0;
        while (run.Next_Call() && run.Call() != Word_Of_The_End) {
            const bool meant = std::count(fault.calls.begin(), fault.calls.end(), run.Call()) > 0;
            if (!meant || ++seen < at || seen > last) continue;
            if (fault.error == Short)
                run.Cut_Short();
            else
                run.Fail(fault.error);
        }
        const auto where = [&] {
            return std::string(fault.name) + " at " + std::to_string(at) + (for_ever ? " and on" : "");
        };
        const bool told = run.First_Argument() == Told;
        const std::string found = machine.Found();
        EXPECT_TRUE(found == "new" || (told && machine.Is_As_Before(found))) << where() << ": " << found;
        while (run.Next_Call()) {
        }
        EXPECT_EQ(run.Exit_Code(), 0) << where() << ": the next save fails";
        EXPECT_EQ(machine.Found(), "new") << where() << ", saved again";
        return seen >= at;
    }
};

TEST_P(HostFaults, AreToldOrDoNoHarm) {
    const PreparedSave prepared(GetParam());
    unsigned long points = 0;
    for (const HostFault &fault : Host_Faults) {
        points += Each_Fault(
            [&](unsigned long at, bool for_ever) { return Try(prepared, fault, at, for_ever); });
    }
    EXPECT_GT(points, 20u);
    Print_Figure((std::string("fault points of the host in a save: ") + GetParam().name).c_str(), points);
}

INSTANTIATE_TEST_SUITE_P(Paths, HostFaults, ::testing::ValuesIn(Save_Paths()), Name_Of);

} // namespace
