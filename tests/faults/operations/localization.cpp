#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/world_beat.h>
#include <kelmara/system/file.h>
#include <tests/faults/operations/plain_dialog.h>

namespace {

const char Path[] = "c:\\strings.ltx";

/// A table of two strings, of which the second is long, and where one goes.
struct Table {
    explicit Table(bool unindexed = true) : table(unindexed) {
        CKMFile file;
        file.Open(Path, false, false);
        table.Load_Table(&file);
    }
    std::string State() {
        std::string state = std::to_string(table.Count_Entries()) + static_cast<char *>(target);
        for (long i = 0; i < table.Count_Entries(); ++i) {
            CSafeStr text;
            table.Get_String(i, text);
            state += std::string("|") + static_cast<char *>(text);
        }
        return state;
    }
    CStringTable table;
    CSafeStr target{"before"};
};

struct Beat {
    Beat() { beat.Load_Localization(Path, true); }
    CWorldBeat beat;
    char buffer[1000] = "before";
    CSafeStr text{"a ^FIRST b"};
};

struct Loading {
    Loading() { file.Open(Path, false, false); }
    CKMFile file;
    CStringTable table;
};

struct Shown : Beat {
    PlainDialog dialog;
    HWND control = dialog.Add("^FIRST");
};

template <class Operate>
Operation On_Table(const char *name, long done, std::vector<Outcome> stated, Operate operate,
                   Leaves leaves = Leaves::Before) {
    return Row(
        name, done, stated, [] { return std::make_shared<Table>(); }, operate,
        [](Table &of) { return of.State(); }, leaves);
}

} // namespace

Operations Localization_Operations() {
    static const CSafeStr long_string(Long_Text.c_str());
    const auto beat = [] { return std::make_shared<Beat>(); };
    return {
        On_Table("New_Table", 0, {Gives_No_Memory}, [](Table &of) { return of.table.New_Table(); }),
        On_Table("Set_String", 1, {Gives(-1)}, [](Table &of) { return of.table.Set_String(0, long_string); }),
        On_Table("Set_String at the end", 2, {Gives(-1)},
                 [](Table &of) { return of.table.Set_String(2, long_string); }),
        On_Table("Import_String", 2, {Gives(-1)},
                 [](Table &of) { return of.table.Import_String("text\tNAME\t1\tcomments\r\n"); }),
        On_Table("Delete_String", 0, {}, [](Table &of) { return of.table.Delete_String(1), 0; }),
        // "The target is empty when ... it cannot get memory"
        On_Table(
            "Get_String", 0, {Throws_No_Memory},
            [](Table &of) { return of.table.Get_String(1, of.target), 0; }, Leaves::Partly),
        Row(
            "Load_Table", 0, {Gives_No_Memory}, [] { return std::make_shared<Loading>(); },
            [](Loading &of) { return of.file.MoveTo(0, 0), of.table.Load_Table(&of.file); },
            [](Loading &of) { return std::to_string(of.table.Count_Entries()); }),
        Row(
            "Load_Localization", 0, {Gives_No_Memory, Gives(2)}, beat,
            [](Beat &of) { return of.beat.Load_Localization(Path, true); },
            [](Beat &of) { return of.buffer; }, Leaves::Partly), // Load_Table leaves no table
        Row(
            "Get_String to a buffer", 0, {Gives_No_Memory}, beat,
            [](Beat &of) { return of.beat.Get_String("SECOND", of.buffer, sizeof of.buffer); },
            [](Beat &of) { return of.buffer; }),
        Row(
            "Get_Temp_String", 0, {Throws_No_Memory}, beat,
            [](Beat &of) { return of.beat.Get_Temp_String("SECOND"), 0; }, [](Beat &) { return ""; }),
        Row(
            "Localize_String", 0, {}, beat, [](Beat &of) { return of.beat.Localize_String(of.text), 0; },
            [](Beat &of) { return static_cast<char *>(of.text); }, Leaves::Either),
        Row(
            "Localize_Dialog", 0, {}, [] { return std::make_shared<Shown>(); },
            [](Shown &of) { return of.beat.Localize_Dialog(of.dialog), 0; },
            [](Shown &of) { return Title_Of(of.control); }, Leaves::Either),
    };
}
