#include <tests/faults/operations/operation.h>

#include <kelmara/kelmara.h>
#include <tests/support/plain_dialog.h>

namespace {

/// A dialog with controls, and what makes layouts and help for it.
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
        return Title_Of(label) + "|" + owned(0) + owned(1) + "|" + Place_Of(label) + "|" + Place_Of(pane) +
               "|" + Place_Of(dialog) + "|" + std::to_string(GetWindowLongA(label, GWL_WNDPROC) == procedure);
    }
    PlainDialog dialog;
    HWND label = dialog.Add("Label"), pane = dialog.Add("", "Static", 7);
    LONG procedure = GetWindowLongA(label, GWL_WNDPROC);
    CAutoPositionManager layout;
    CActiveHelpManager help;
    void *user_data = nullptr;
};

struct Laid_Out : Subject {
    Laid_Out() {
        const HWND members[] = {label, nullptr};
        layout.Manage_Control(label, APM_KEEP_RIGHT, nullptr, nullptr);
        layout.Manage_GroupBox(pane, 0, members, nullptr);
        SetWindowPos(dialog, nullptr, 0, 0, 400, 300, SWP_NOMOVE | SWP_NOZORDER);
        SetWindowTextA(label, "A longer label");
    }
};

// Tells how wide the label becomes for another text.
struct Measured : Subject {
    std::string State() const {
        auto &measured = const_cast<CAutoPositionManager &>(layout);
        SetWindowTextA(label, "Another label");
        measured.Update_Controls();
        const std::string place = Place_Of(label);
        SetWindowTextA(label, "Label");
        measured.Update_Controls();
        return place;
    }
    long Manage(long flags) {
        const char *const strings[] = {"Label", "A label of some length", nullptr};
        return layout.Manage_Control(label, flags, nullptr, strings);
    }
};

struct Helped : Subject {
    Helped() { help.AddControl(label, "help"); }
    std::string State() const { return Title_Of(pane); }
};

struct Edited : Subject {
    std::string State() const { return Title_Of(edit); }
    HWND edit = dialog.Add("a1b2c3", "Edit");
};

struct Picture {
    Picture() { ExtractIconExA("c:\\icon.ico", 0, &icon, nullptr, 1); }
    ~Picture() {
        DestroyIcon(icon);
        if (block) ds_free(block);
    }
    HICON icon = nullptr;
    void *block = nullptr;
    long size = 0;
};

struct Packed : Picture {
    Packed() { Pack_Icon(icon, &block, &size); }
    ~Packed() { ReleaseDC(nullptr, screen); }
    HDC screen = GetDC(nullptr);
};

struct Bitmap : Picture {
    ~Bitmap() { DeleteObject(bitmap); }
    HBITMAP bitmap = CreateBitmap(8, 8, 1, 1, nullptr);
};

/// Moves done one by one: of those that the machine has no memory for, none is made.
template <class Operate>
Operation Moving(const char *name, Operate operate, const Leaves &leaves = Partly_Untold) {
    return Row<Subject>(name, 0, {}, leaves, operate);
}

} // namespace

Operations Dialog_Operations() {
    return {
        Row<Subject>(
            "InsertWindowUserData", 1, {Nothing},
            [](auto &of) { return (of.user_data = InsertWindowUserData(of.label, 0, &of)) != nullptr; }),
        Row<Subject>("AddControl", 0, {}, Either, [](auto &of) { of.help.AddControl(of.label, "help"); }),
        Row<Helped>("SetHelp", 0, {}, Either,
                    [](auto &of) { SendMessageA(of.label, WM_SETCURSOR, 0, HTCLIENT); }),
        Row<Subject>(
            "Manage_Control", 0, {No_Memory},
            [](auto &of) { return of.layout.Manage_Control(of.label, APM_KEEP_RIGHT, nullptr, nullptr); }),
        Row<Measured>("Manage_Control, padded", 0, {No_Memory}, [](auto &of) { return of.Manage(0); }),
        Row<Measured>("Manage_Control, as wide as its widest text", 0, {No_Memory},
                      [](auto &of) { return of.Manage(APM_WIDEST_STRING | APM_NO_PADDING); }),
        Row<Subject>("Manage_GroupBox", 0, {No_Memory},
                     [](auto &of) {
                         const HWND members[] = {of.label, nullptr};
                         return of.layout.Manage_GroupBox(of.pane, 0, members, nullptr);
                     }),
        // without the measure of its text the label follows the dialog as wide as it is
        Row<Laid_Out>("Update_Controls", 0, {}, Or(Partly_Untold, {"110 10 170 40", "105 10 170 40"}),
                      [](auto &of) { of.layout.Update_Controls(); }),
        Row<Laid_Out>("Center_Child_Controls", 0, {}, Partly_Untold,
                      [](auto &of) { of.layout.Center_Child_Controls(); }),
        Row<Laid_Out>("Release_Control", 0, {}, [](auto &of) { return of.layout.Release_Control(of.label); }),
        Row<Subject>("Save_Window_Position", 0, {},
                     [](auto &of) { Save_Window_Position("faults", of.dialog); }),
        Row<Subject>("Restore_Saved_Window_Position", 0, {},
                     [](auto &of) { Restore_Saved_Window_Position("faults", of.dialog, true); }),
        Row<Subject>("Text_Width", 1, {Nothing}, [](auto &of) { return Text_Width(of.label, "text") > 0; }),
        Row<Subject>("Text_Height", 1, {Nothing}, [](auto &of) { return Text_Height(of.label) > 0; }),
        Row<Subject>("Textbox_Height", 1, {Nothing},
                     [](auto &of) { return Textbox_Height(of.label, "some words of text") > 0; }),
        Moving("MoveWindowTo", [](auto &of) { MoveWindowTo(of.label, 3, 4, true); }),
        Moving("MoveWindowVert", [](auto &of) { MoveWindowVert(of.label, 5, of.dialog); }),
        Moving("SetWindowHeight", [](auto &of) { SetWindowHeight(of.label, 50); }),
        Moving("Get_Frame_Rect",
               [](auto &of) {
                   RECT place;
                   Get_Frame_Rect(of.dialog, 7, &place, true);
               }),
        Moving(
            "Hide_Bound_Items", [](auto &of) { Hide_Bound_Items(of.dialog, 7); }, Once(Partly_Untold)),
        Row<Edited>("Filter_Edit_Field", 0, {}, Either,
                    [](auto &of) { Filter_Edit_Field(of.edit, "abc", nullptr); }),
        Row<Bitmap>("CreateBitmapInfoStruct", 1, {Nothing},
                    [](auto &of) { return (of.block = CreateBitmapInfoStruct(of.bitmap)) != nullptr; }),
        Row<Picture>("Pack_Icon", 0, {No_Memory, Gives(E_UNEXPECTED)},
                     [](auto &of) { return Pack_Icon(of.icon, &of.block, &of.size); }),
        Row<Packed>("Unpack_Icon", 1, {Nothing, Gives(E_UNEXPECTED)},
                    [](auto &of) {
                        HICON made = nullptr;
                        const long result = Unpack_Icon(&made, of.block, of.size, of.screen);
                        if (made) DestroyIcon(made);
                        return result != 0 ? result : static_cast<long>(made != nullptr);
                    }),
        Row<Picture>("Load_Icon_From_File", 1, {Nothing},
                     [](auto &) {
                         const HICON loaded = Load_Icon_From_File(nullptr, "c:\\icon.ico", 32);
                         return loaded && DestroyIcon(loaded);
                     }),
        Row<Picture>("GetFullSystemPalette", 1, {Nothing},
                     [](auto &) {
                         const HPALETTE palette = GetFullSystemPalette();
                         return palette != reinterpret_cast<HPALETTE>(-1) && DeleteObject(palette);
                     }),
    };
}
