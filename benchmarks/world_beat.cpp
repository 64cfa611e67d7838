// What it costs to translate a dialog, and to ask for a record behind a window: beside the window calls that
// they make.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/dialogs/window_user_data.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/world_beat.h>
#include <kelmara/system/file.h>

#include <platform/user.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int Control_Count = 200;

std::string Identifier(int number) {
    return "KMSTR_CONTROL_" + std::to_string(number);
}

struct Dialog {
    HWND window = CreateWindowExA(0, "#32770", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    std::vector<HWND> controls;
    std::vector<std::string> references;

    explicit Dialog(int count = Control_Count) {
        for (int i = 0; i < count; ++i) {
            references.push_back("^" + Identifier(i % Control_Count));
            controls.push_back(CreateWindowExA(0, "Static", "", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9, window,
                                               nullptr, nullptr, nullptr));
        }
    }
    void Write_References() const {
        for (std::size_t i = 0; i < controls.size(); ++i) SetWindowTextA(controls[i], references[i].c_str());
    }
};

void Load(CWorldBeat &beat) {
    CStringTable table(true);
    CKMFile file;
    if (table.New_Table() != 0 || file.Open("c:\\texts.ltx", true, true) != 0) std::abort();
    for (int i = 0; i < Control_Count; ++i)
        table.Import_String(("A control's text\t" + Identifier(i) + "\t0\t ").c_str());
    if (table.Save_Changes(&file) != 0) std::abort();
    file.Close();
    if (beat.Load_Localization("c:\\texts.ltx", true) != 0) std::abort();
}

void Measure_Growth() {
    CWorldBeat beat;
    Load(beat);
    measure::Growth_Heading("translation");
    measure::Growth growth("write n references and translate them", 1.15);
    for (const long size : measure::Sizes(1000)) {
        const Dialog dialog(static_cast<int>(size));
        growth.At(size, [&] {
            dialog.Write_References();
            beat.Localize_Dialog(dialog.window);
        });
        DestroyWindow(dialog.window);
    }
}

void Measure_Dialog() {
    const Dialog dialog;
    CWorldBeat beat;
    Load(beat);
    measure::Heading("translation", "texts written, read and written");
    measure::Compare(
        "200 references written and translated",
        [&] {
            dialog.Write_References();
            beat.Localize_Dialog(dialog.window);
        },
        [&] {
            char text[512];
            dialog.Write_References();
            for (const HWND control : dialog.controls) GetWindowTextA(control, text, sizeof text);
            dialog.Write_References();
        },
        1.5);
    DestroyWindow(dialog.window);
}

void Measure_Record() {
    const Dialog dialog;
    void *const record = InsertWindowUserData(dialog.window, 0, nullptr);
    measure::Heading("window data", "the window's own word");
    measure::Compare(
        "a slot of a window's record", MEASURED { measure::Keep(GetWindowUserData(dialog.window, 0)); },
        MEASURED { measure::Keep(GetWindowLongA(dialog.window, GWL_USERDATA)); }, 1.5);
    DeleteWindowUserData(record);
    DestroyWindow(dialog.window);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    Measure_Dialog();
    Measure_Record();
    Measure_Growth();
    return 0;
}
