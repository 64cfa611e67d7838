#include <reference_suite/programs/road/help_and_icons.h>

#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>
#include <reference_suite/programs/road/pictures.h>

#include <kelmara/kelmara.h>

#include <platform/gdi.h>
#include <platform/machine.h>
#include <platform/user.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr char Handed_On[] = "c:\\icon.block";

/// A dialog with an icon, two fields and a pane below them.
class FieldDialog {
  public:
    FieldDialog() {
        constexpr DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE;
        window = CreateWindowExA(WS_EX_DLGMODALFRAME, "#32770", "Fields", style, 100, 100, 300, 160, nullptr,
                                 nullptr, nullptr, nullptr);
        Require(window != nullptr, "a dialog can be made");
        icon = Add("Static", SS_ICON, {12, 12, 44, 44});
        name = Add("Edit", WS_BORDER, {60, 10, 280, 32});
        password = Add("Edit", WS_BORDER | ES_PASSWORD, {60, 40, 280, 62});
        pane = Add("Static", SS_SUNKEN, {12, 76, 280, 120});
    }
    ~FieldDialog() { DestroyWindow(window); }
    FieldDialog(const FieldDialog &) = delete;
    FieldDialog &operator=(const FieldDialog &) = delete;

    std::string Pane_Text() const {
        char text[256];
        GetWindowTextA(pane, text, sizeof text);
        return text;
    }
    HWND window, icon, name, password, pane;

  private:
    HWND Add(const char *control_class, DWORD style, RECT place) const {
        const HWND control =
            CreateWindowExA(0, control_class, "", WS_CHILD | WS_VISIBLE | style, static_cast<int>(place.left),
                            static_cast<int>(place.top), static_cast<int>(place.right - place.left),
                            static_cast<int>(place.bottom - place.top), window, nullptr, nullptr, nullptr);
        SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), 0);
        return control;
    }
};

} // namespace

void Point_At_Fields() {
    Begin_Chapter("Help under the pointer");
    CActiveHelpManager help; // goes after the windows
    const FieldDialog dialog;
    help.Initialize(dialog.pane);
    help.AddControl(dialog.name, "The name that you chose when you signed up.");
    help.AddControl(dialog.password, "Your password. Capital letters count.");
    Require(Point_At_Window(dialog.name), "a user can point at a field");
    Tell("Over the first field the pane says: %s", dialog.Pane_Text().c_str());
    Point_At_Window(dialog.password);
    Tell("over the second: %s", dialog.Pane_Text().c_str());
    Require(dialog.Pane_Text() == "Your password. Capital letters count.", "the pane follows the pointer");
}

void Hand_On_An_Icon() {
    Begin_Chapter("An icon as a block of bytes");
    const HICON loaded = Load_Icon_From_File(nullptr, "kelmara.ico", 32);
    Require(loaded != nullptr, "the suite's icon is in its Content folder");
    void *block = nullptr;
    long size = 0;
    Require(Pack_Icon(loaded, &block, &size) == 0, "an icon can be packed");
    DestroyIcon(loaded);
    CKMFile file;
    Require(file.Open(Handed_On, true, true) == 0 && file.Write(block, size, true) == 0 && file.Close() == 0,
            "the block can be written to a file");
    ds_free(block);
    Tell("The suite's icon, packed, is %ld bytes. Another process takes them:", size);
    Neighbour other("icon");
    const std::string made = other.Hear();
    Require(made == "32 x 32" && other.Wait() == 0, "the other process makes the icon again");
    Tell("it has an icon of %s pixels again, and shows it.", made.c_str());
}

int Make_The_Icon_Again() {
    CKMFile file;
    std::vector<char> block(sizeof(PackedIconHeader));
    auto *header = reinterpret_cast<PackedIconHeader *>(block.data());
    if (file.Open(Handed_On, false, false) != 0 || file.Read(header, sizeof *header) != 0) return 1;
    const auto bits = static_cast<long>(header->mask_size + header->colour_size);
    block.resize(block.size() + static_cast<std::size_t>(bits));
    if (file.Read(block.data() + sizeof(PackedIconHeader), bits) != 0) return 2;
    const HDC screen = GetDC(nullptr);
    HICON icon = nullptr;
    const long result = Unpack_Icon(&icon, block.data(), static_cast<long>(block.size()), screen);
    ReleaseDC(nullptr, screen);
    if (result != 0 || !icon) return 3;
    header = reinterpret_cast<PackedIconHeader *>(block.data());
    {
        const FieldDialog dialog;
        SendMessageA(dialog.icon, STM_SETICON, reinterpret_cast<WPARAM>(icon), 0);
        SetWindowTextA(dialog.pane, "An icon that came as a block of bytes.");
        std::printf("%ld x %ld\n", header->colour_width, header->colour_height);
        Take_Picture(dialog.window, "icon");
    }
    DestroyIcon(icon);
    return 0;
}
