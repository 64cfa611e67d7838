#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/world_beat.h>
#include <kelmara/system/file.h>
#include <tests/support/plain_dialog.h>
#include <tests/support/replaced_import.h>

#include <platform/menus.h>

namespace {

const char Path[] = "c:\\strings.ltx";

/// A table of two strings, of which the second is long, and where one goes.
struct Table {
    Table() {
        CKMFile file;
        file.Open(Path, false, false);
        table.Load_Table(&file);
    }
    std::string State() {
        std::string state = "target=" + std::string(static_cast<char *>(target)) + "|";
        for (long i = 0; i < table.Count_Entries(); ++i) {
            CSafeStr text;
            table.Get_String(i, text);
            state += static_cast<char *>(text) + std::string("|");
        }
        return state;
    }
    CStringTable table{true};
    CSafeStr target{"before"};
};

struct Beat {
    Beat() { beat.Load_Localization(Path, true); }
    std::string State() {
        char first[100] = "none";
        beat.Get_String("FIRST", first, sizeof first);
        return std::string("table=") + first + "|text=" + static_cast<char *>(text) + "|" + buffer;
    }
    CWorldBeat beat;
    char buffer[1000] = "before";
    CSafeStr text{"a ^FIRST b"};
};

struct Loading {
    Loading() { file.Open(Path, false, false); }
    std::string State() { return std::to_string(table.Count_Entries()); }
    CKMFile file;
    CStringTable table;
};

struct Shown : Beat {
    Shown() { AppendMenuA(menu, 0, 5, "^FIRST"), AppendMenuA(menu, 0, 6, "^SECOND"); }
    ~Shown() { DestroyMenu(menu); }
    std::string State() {
        std::string state = Title_Of(control) + "|";
        for (UINT item : {0u, 1u})
            GetMenuStringA(menu, item, buffer, sizeof buffer, MF_BYPOSITION),
                state += buffer + std::string("|");
        return state;
    }
    const HMENU menu = CreatePopupMenu();
    PlainDialog dialog;
    HWND control = dialog.Add("^FIRST");
};

struct Saving : Table {
    Saving() { file.Open_With_Rollback("c:\\saved.ltx"); }
    ~Saving() { file.Rollback(); }
    CKMFile file;
};

int Characters_Told(HWND, LPCSTR text, LPCSTR title, UINT) {
    return *text && *title ? 7 : 0;
}

struct Telling : Beat {
    ReplacedImport box{"libkelmara.so", "MessageBoxA", reinterpret_cast<void *>(Characters_Told)};
};

} // namespace

Operations Localization_Operations() {
    static const CSafeStr long_string(Long_Text.c_str());
    static const Leaves No_Target = Or(Before, {"target="});
    return {
        Row<Table>("New_Table", 0, {No_Memory}, [](auto &of) { return of.table.New_Table(); }),
        Row<Table>("Set_String", 1, {Gives(-1)},
                   [](auto &of) { return of.table.Set_String(0, long_string); }),
        Row<Table>("Set_String at the end", 2, {Gives(-1)},
                   [](auto &of) { return of.table.Set_String(2, long_string); }),
        Row<Table>("Set_Identifier", 0, {}, Either,
                   [](auto &of) { of.table.Set_Identifier(0, long_string); }),
        Row<Table>("Set_Comments", 0, {}, Either, [](auto &of) { of.table.Set_Comments(0, long_string); }),
        Row<Table>("Import_String", 2, {Gives(-1)},
                   [](auto &of) { return of.table.Import_String("text\tNAME\t1\tcomments\r\n"); }),
        Row<Table>("Delete_String", 0, {}, [](auto &of) { of.table.Delete_String(1); }),
        // "The target is empty when ... it cannot get memory"
        Row<Table>("Get_String", 0, {Thrown}, No_Target, [](auto &of) { of.table.Get_String(1, of.target); }),
        Row<Table>("Get_String_From_Identifier", 0, {Thrown}, No_Target,
                   [](auto &of) { of.table.Get_String_From_Identifier("SECOND", of.target); }),
        Row<Saving>("Save_Changes", 0, {}, [](auto &of) { return of.table.Save_Changes(&of.file); }),
        Row<Loading>("Load_Table", 0, {No_Memory},
                     [](auto &of) { return of.file.MoveTo(0, 0), of.table.Load_Table(&of.file); }),
        // Load_Table leaves no table
        Row<Beat>("Load_Localization", 0, {No_Memory, Gives(2)}, Or(Before, {"table="}),
                  [](auto &of) { return of.beat.Load_Localization(Path, true); }),
        Row<Beat>("Get_String to a buffer", 0, {No_Memory},
                  [](auto &of) { return of.beat.Get_String("SECOND", of.buffer, sizeof of.buffer); }),
        Row<Beat>("Get_String of the texts", 0, {Thrown}, Or(Before, {"text="}),
                  [](auto &of) { of.beat.Get_String("SECOND", of.text); }),
        Row<Beat>("Get_Temp_String", 0, {Thrown}, [](auto &of) { of.beat.Get_Temp_String("SECOND"); }),
        Row<Beat>("Localize_String", 0, {}, Either, [](auto &of) { of.beat.Localize_String(of.text); }),
        Row<Beat>("Std_Log_Entry by a string", 0, {}, [](auto &of) { of.beat.Std_Log_Entry("SECOND"); }),
        Row<Shown>("Localize_Dialog", 0, {}, Either, [](auto &of) { of.beat.Localize_Dialog(of.dialog); }),
        // each item for itself keeps its reference
        Row<Shown>("Localize_Menu", 0, {}, Partly_Untold, [](auto &of) { of.beat.Localize_Menu(of.menu); }),
        Row<Telling>("MessageBoxA", 7, {},
                     [](auto &of) { return of.beat.MessageBoxA(nullptr, "SECOND", "FIRST", 0); }),
    };
}
