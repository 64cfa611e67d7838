#include <tests/faults/operations/operation.h>

#include <kelmara/kelmara.h>
#include <tests/faults/operations/plain_dialog.h>

namespace {

/// A dialog with a control of each kind, and what makes layouts and help for it.
struct Subject {
    Subject() {
        layout.Initialize(dialog);
        help.Initialize(pane);
    }
    ~Subject() {
        if (user_data) DeleteWindowUserData(user_data);
    }
    std::string State() const {
        const auto owned = [this](int slot) {
            return GetWindowUserData(label, slot) > 0 ? "owned " : "free ";
        };
        return Title_Of(label) + owned(0) + owned(1) +
               std::to_string(GetWindowLongA(label, GWL_WNDPROC) == procedure);
    }
    PlainDialog dialog;
    HWND label = dialog.Add("Label"), pane = dialog.Add("");
    LONG procedure = GetWindowLongA(label, GWL_WNDPROC);
    CAutoPositionManager layout;
    CActiveHelpManager help;
    CBoundControlCache cache;
    void *user_data = nullptr;
};

template <class Operate>
Operation On_Dialog(const char *name, long done, std::vector<Outcome> stated, Operate operate,
                    Leaves leaves = Leaves::Before) {
    return Row(
        name, done, stated, [] { return std::make_shared<Subject>(); }, operate,
        [](Subject &of) { return of.State(); }, leaves);
}

template <auto Get, auto Return>
bool Gets(Subject &of) {
    auto *const control = (of.cache.*Get)();
    (of.cache.*Return)(control);
    return control != nullptr;
}

struct Picture {
    Picture() { ExtractIconExA("c:\\icon.ico", 0, &icon, nullptr, 1); }
    ~Picture() { DestroyIcon(icon); }
    HICON icon = nullptr;
};

bool Packs(Picture &of, long &result) {
    void *block = nullptr;
    long size = 0;
    result = Pack_Icon(of.icon, &block, &size);
    if (block) ds_free(block);
    return result == 0;
}

struct Packed : Picture {
    Packed() {
        Pack_Icon(icon, &block, &size);
        screen = GetDC(nullptr);
    }
    ~Packed() {
        ReleaseDC(nullptr, screen);
        ds_free(block);
    }
    void *block = nullptr;
    long size = 0;
    HDC screen;
};

} // namespace

Operations Dialog_Operations() {
    using Cache = CBoundControlCache;
    const auto picture = [] { return std::make_shared<Picture>(); };
    const auto no_state = [](Picture &) { return ""; };
    return {
        On_Dialog(
            "InsertWindowUserData", 1, {Gives_Nothing},
            [](Subject &of) { return (of.user_data = InsertWindowUserData(of.label, 0, &of)) != nullptr; }),
        On_Dialog("GetTextControl", 1, {Gives_Nothing},
                  Gets<&Cache::GetTextControl, &Cache::ReturnTextControl>),
        On_Dialog("GetCheckboxControl", 1, {Gives_Nothing},
                  Gets<&Cache::GetCheckboxControl, &Cache::ReturnCheckboxControl>),
        On_Dialog("GetListboxControl", 1, {Gives_Nothing},
                  Gets<&Cache::GetListboxControl, &Cache::ReturnListboxControl>),
        On_Dialog("GetComboboxControl", 1, {Gives_Nothing},
                  Gets<&Cache::GetComboboxControl, &Cache::ReturnComboboxControl>),
        On_Dialog(
            "AddControl", 0, {}, [](Subject &of) { return of.help.AddControl(of.label, "help"), 0; },
            Leaves::Either),
        On_Dialog(
            "Manage_Control", 0, {Gives_No_Memory},
            [](Subject &of) { return of.layout.Manage_Control(of.label, APM_KEEP_RIGHT, nullptr, nullptr); }),
        On_Dialog("Manage_GroupBox", 0, {Gives_No_Memory},
                  [](Subject &of) {
                      const HWND members[] = {of.label, nullptr};
                      return of.layout.Manage_GroupBox(of.pane, 0, members, nullptr);
                  }),
        On_Dialog("Save_Window_Position", 0, {},
                  [](Subject &of) { return Save_Window_Position("faults", of.dialog), 0; }),
        On_Dialog("Restore_Saved_Window_Position", 0, {},
                  [](Subject &of) { return Restore_Saved_Window_Position("faults", of.dialog, false), 0; }),
        On_Dialog("Text_Width", 1, {Gives_Nothing},
                  [](Subject &of) { return Text_Width(of.label, "text") > 0; }),
        On_Dialog("Textbox_Height", 1, {Gives_Nothing},
                  [](Subject &of) { return Textbox_Height(of.label, "some words of text") > 0; }),
        Row(
            "Pack_Icon", 0, {Gives_No_Memory, Gives(E_UNEXPECTED)}, picture,
            [](Picture &of) {
                long result = 0;
                Packs(of, result);
                return result;
            },
            no_state),
        Row(
            "Unpack_Icon", 1, {Gives_Nothing, Gives(E_UNEXPECTED)}, [] { return std::make_shared<Packed>(); },
            [](Packed &of) {
                HICON made = nullptr;
                const long result = Unpack_Icon(&made, of.block, of.size, of.screen);
                if (made) DestroyIcon(made);
                return result != 0 ? result : static_cast<long>(made != nullptr);
            },
            no_state),
        Row(
            "Load_Icon_From_File", 1, {Gives_Nothing}, picture,
            [](Picture &) {
                const HICON loaded = Load_Icon_From_File(nullptr, "c:\\icon.ico", 32);
                return loaded && DestroyIcon(loaded);
            },
            no_state),
        Row(
            "GetFullSystemPalette", 1, {Gives_Nothing}, picture,
            [](Picture &) {
                const HPALETTE palette = GetFullSystemPalette();
                return palette != reinterpret_cast<HPALETTE>(-1) && DeleteObject(palette);
            },
            no_state),
    };
}
