// Memory that runs out inside an operation of the library: what the header states comes of it, nothing is
// left behind, and what was there before is there afterwards and can be worked with.
//
// All that the library exports and that asks for memory has a row in operations/, but for these:
//   - a working log or wait companion, which is loaded once for the process: the rows load one that is none;
//   - objects that hold lists and ask for nothing more, which are made as a list is, CActiveHelpControl too;
//   - overloads that are reached through others: CSafeStr::Copy_Any_Text through its assignments and
//     constructors, the CSmartBuffer::Write of bytes through that of texts;
//   - the loading of the telephony service, which the process remembers: the first row has it done;
//   - Debugger and DllMain, which end a process or come with its loading.

#include <tests/faults/operations/operation.h>
#include <tests/support/failing_new.h>
#include <tests/support/fault_points.h>
#include <tests/support/file_verbs.h>
#include <tests/support/library_heap.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/test_memory.h>
#include <tests/support/window_verbs.h>

#include <kelmara/containers/list.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/shared_state/instances.h>
#include <kelmara/system/file.h>
#include <platform/com.h>
#include <reference_suite/installer/icon_file.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace {

std::string Text_Of(const Outcome &outcome) {
    static constexpr const char *Kinds[] = {"", "int ", "long ", "something else"};
    return Kinds[outcome.kind] + std::to_string(outcome.value);
}

using Parts = std::map<std::string, std::string>; // of a state, by name or place

Parts Parts_Of(const std::string &state) {
    Parts parts;
    std::istringstream text(state);
    for (std::string part; std::getline(text, part, '|');) {
        const std::size_t end = part.find('=');
        parts[end == std::string::npos ? std::to_string(parts.size()) : part.substr(0, end)] = part;
    }
    return parts;
}

std::set<std::string> Names_In(std::initializer_list<const Parts *> states) {
    std::set<std::string> names;
    for (const Parts *parts : states)
        for (const auto &part : *parts) names.insert(part.first);
    return names;
}

std::string Part_Of(const Parts &parts, const std::string &name) {
    const auto found = parts.find(name);
    return found == parts.end() ? "" : found->second;
}

/// What may lack: tells whether it was asked for the failing one.
struct Source {
    const char *word, *name;
    unsigned long least; // fault points, some nine in ten of those that there are
    void (*fail)(unsigned long at, bool for_ever);
    bool (*end)(); // whether the fault was met
};

std::optional<FailingMemory> failing_services;
std::optional<LibraryHeap> heap;

void Fail_Services(unsigned long at, bool for_ever) {
    failing_services.emplace(static_cast<long>(at), for_ever);
}
bool End_Services() {
    const bool met = failing_services->Refused() > 0;
    failing_services.reset();
    return met;
}

void Fail_Heap(unsigned long at, bool for_ever) {
    heap->Fail(static_cast<long>(at), for_ever);
}
bool End_Heap() {
    const bool met = heap->Refused() > 0;
    heap->Fail(0);
    return met;
}

void Fail_New(unsigned long at, bool for_ever) {
    fails_for_ever = for_ever;
    allocations_until_failure = at;
}
bool End_New() {
    const unsigned long left = std::exchange(allocations_until_failure, 0);
    return left == 0 || (fails_for_ever && left == 1);
}

/// All items of the pool, so that the next one needs a block.
class DrainedPool {
  public:
    DrainedPool() {
        heap->Fail(1, true);
        try {
            for (;;) taken_.Add(0, 0);
        } catch (...) {
        }
        heap->Fail(0);
    }

  private:
    CDSList taken_;
};

Outcome Outcome_Of(const Trial &trial) {
    try {
        return {Outcome::Given, trial.operate()};
    } catch (int number) {
        return {Outcome::Thrown_Int, number};
    } catch (long number) {
        return {Outcome::Thrown_Long, number};
    } catch (...) {
        return {Outcome::Thrown_Otherwise, 0};
    }
}

class AllocationFaults : public FileTest, public ::testing::WithParamInterface<Source> {
  protected:
    void SetUp() override {
        Instance_Available("", ""); // the table stays open
        FileTest::SetUp();
        CoInitialize(nullptr);
        heap.emplace();
        TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE)
            .Set("Content", std::string("c:\\", 4));
        machine.Write("drive_c/windows/system32/winreg.dll", "");
        machine.Write("drive_c/texts.def", "#define ONE 1\r\n#define TWO 2\r\n");
        machine.Write("drive_c/icon.ico", Icon_File({{32, 32}}, [](int, int, int) {
                          return RGBQUAD{1, 2, 3, 4};
                      }));
        Write_Table();
    }
    void TearDown() override {
        heap.reset();
        CoUninitialize();
        FileTest::TearDown();
    }
    static void Write_Table() {
        CStringTable table(true);
        table.New_Table();
        table.Import_String("first\tFIRST\t0\t ");
        table.Import_String((Long_Text + "\tSECOND\t0\t ").c_str());
        CKMFile file;
        file.Open("c:\\strings.ltx", true, true);
        table.Save_Changes(&file);
    }

    bool Try(const Operation &operation, unsigned long at, bool for_ever) {
        const NoLeak no_leak;
        std::optional<DrainedPool> drained;
        if (GetParam().fail == Fail_Heap) drained.emplace();
        const Trial trial = operation.prepare();
        const std::string before = trial.state();
        GetParam().fail(at, for_ever);
        const Outcome outcome = Outcome_Of(trial);
        if (!GetParam().end()) return false;
        const auto where = [&] {
            return std::string(operation.name) + " at " + std::to_string(at) + (for_ever ? " and on" : "");
        };
        const bool done = outcome == Gives(operation.done);
        const bool stated = std::count(operation.stated.begin(), operation.stated.end(), outcome) > 0;
        EXPECT_TRUE(done || stated) << where() << " gives " << Text_Of(outcome);
        const std::string left = trial.state();
        EXPECT_TRUE(May_Be_Left(operation.leaves, done, before, left))
            << where() << " gives " << Text_Of(outcome) << " and leaves " << left << " of " << before;
        if ((done && left == after_) || !operation.leaves.repeats) return true;
        EXPECT_EQ(Text_Of(Outcome_Of(trial)), Text_Of(Gives(operation.done)))
            << where() << " never works again";
        EXPECT_EQ(trial.state(), after_) << where() << ", tried again";
        return true;
    }

    bool May_Be_Left(const Leaves &leaves, bool done, const std::string &before,
                     const std::string &left) const {
        if (done && (leaves.told || left == after_)) return left == after_;
        if (left == before || !leaves.in_parts) return left == before;
        const Parts was = Parts_Of(before), is = Parts_Of(left), becomes = Parts_Of(after_);
        return std::ranges::all_of(Names_In({&was, &is, &becomes}), [&](const std::string &name) {
            const std::string part = Part_Of(is, name);
            return part == Part_Of(was, name) || part == Part_Of(becomes, name) ||
                   std::ranges::count(leaves.also, part) > 0;
        });
    }

    unsigned long Sweep(const Operation &operation) {
        {
            const Trial clean = operation.prepare();
            EXPECT_EQ(Text_Of(Outcome_Of(clean)), Text_Of(Gives(operation.done))) << operation.name;
            after_ = clean.state();
        }
        const unsigned long handles = Open_Handle_Count();
        const unsigned long things = Window_Count() + Gdi_Object_Count() + Icon_Count() + Menu_Count();
        const long heap_before = Heap_Without_Pool();
        const unsigned long points =
            Each_Fault([&](unsigned long at, bool for_ever) { return Try(operation, at, for_ever); });
        EXPECT_EQ(Open_Handle_Count(), handles) << operation.name;
        EXPECT_EQ(Window_Count() + Gdi_Object_Count() + Icon_Count() + Menu_Count(), things)
            << operation.name;
        EXPECT_LE(Heap_Without_Pool(), heap_before + 3) << operation.name; // the pool's tables
        return points;
    }
    // A block of the pool is two of the heap, and stays.
    static long Heap_Without_Pool() {
        return LibraryHeap::Live_Blocks() - 2 * static_cast<long>(LibraryHeap::Blocks(8000).size());
    }

  private:
    std::string after_; // without a fault
};

TEST_P(AllocationFaults, GiveWhatIsStatedAndLeaveWhatWasThere) {
    unsigned long points = 0, operations = 0;
    for (const auto &part :
         {Text_Operations(), List_Operations(), Table_Operations(), Content_Operations(),
          Localization_Operations(), File_Operations(), Registry_Operations(), Shared_State_Operations(),
          Suite_Operations(), Dialog_Operations(), Bound_Control_Operations(), Connectivity_Operations()}) {
        for (const Operation &operation : part) {
            const unsigned long met = Sweep(operation);
            points += met;
            operations += met > 0;
        }
    }
    EXPECT_GE(points, GetParam().least);
    Print_Figure((std::string("operations that need ") + GetParam().name).c_str(), operations);
    Print_Figure((std::string("fault points in ") + GetParam().name).c_str(), points);
}

INSTANTIATE_TEST_SUITE_P(Sources, AllocationFaults,
                         ::testing::Values(Source{"Services", "memory services", 315, Fail_Services,
                                                  End_Services},
                                           Source{"Heap", "the library's heap", 125, Fail_Heap, End_Heap},
                                           Source{"New", "the machine's memory", 6600, Fail_New, End_New}),
                         [](const auto &source) { return source.param.word; });

} // namespace
