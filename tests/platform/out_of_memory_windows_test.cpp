// Windows, controls, menus, what is drawn, objects of components, and the shell.

#include <tests/platform/out_of_memory.h>
#include <tests/support/built_modules.h>
#include <tests/support/plain_dialog.h>
#include <tests/support/second_process.h>

#include <tests/modules/com_class.h>
#include <tests/modules/com_service.h>

#include <platform/com.h>
#include <platform/machine_contents.h>
#include <platform/shell.h>
#include <reference_suite/installer/icon_file.h>

namespace {

constexpr char Long_Text[] = "A text that is long enough to need memory of its own, twice over";

/// What is worked on, with a child, made and destroyed with memory enough.
class Dialog {
  public:
    Dialog() {
        const EnoughMemory enough;
        dialog_.emplace();
        dialog_->Add("", "Button", 0, BS_GROUPBOX);
    }
    ~Dialog() {
        const EnoughMemory enough;
        dialog_.reset();
    }
    operator HWND() const { return *dialog_; }
    HWND Add(const char *control_class, DWORD style = 0) const {
        const EnoughMemory enough;
        return dialog_->Add("", control_class, 0, style);
    }

  private:
    std::optional<PlainDialog> dialog_;
};

bool Class_Comes_And_Goes() {
    WNDCLASSA scarce = {};
    scarce.lpfnWndProc = DefWindowProcA;
    scarce.lpszClassName = "A class with a name that needs memory";
    return RegisterClassA(&scarce) && UnregisterClassA(scarce.lpszClassName, nullptr);
}

// What memory fails is the making; taking away needs none.
bool Windows_Come_And_Go() {
    const HWND window = CreateWindowExA(0, "#32770", Long_Text, WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr,
                                        nullptr, nullptr, nullptr);
    if (!window) return false;
    const HWND child = CreateWindowExA(0, "#32770", "", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9, window, nullptr,
                                       nullptr, nullptr);
    return DestroyWindow(window) && child;
}

bool Texts_Go_To_And_Fro() {
    const Dialog dialog;
    char text[100];
    return SetWindowTextA(dialog, Long_Text) &&
           GetWindowTextA(dialog, text, sizeof text) == sizeof Long_Text - 1;
}

bool Posts() {
    const Dialog dialog;
    MSG message;
    return PostMessageA(dialog, WM_USER, 0, 0) && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);
}

bool Enumerates() {
    const Dialog dialog;
    return EnumChildWindows(
        dialog, [](HWND, LPARAM) { return TRUE; }, 0);
}

bool Sees_Windows() {
    const Dialog dialog;
    int seen = 0;
    const auto count = [](const MachineTopWindow *, void *of) { return ++*static_cast<int *>(of), true; };
    return Visit_Machine_Windows(count, &seen) && seen == 1;
}

bool Makes_Controls() {
    const Dialog dialog;
    for (const char *each : {"Static", "Button", "Edit", "ListBox", "ComboBox", "ComboBoxEx32"}) {
        if (!CreateWindowExA(0, each, Long_Text, WS_CHILD | CBS_DROPDOWN, 0, 0, 90, 90, dialog, nullptr,
                             nullptr, nullptr))
            return false;
    }
    return true;
}

bool Fills_A_Combo_Box() {
    const Dialog dialog;
    const HWND combo = dialog.Add("ComboBoxEx32", CBS_DROPDOWN);
    const auto text = reinterpret_cast<LPARAM>(Long_Text);
    if (SendMessageA(combo, CB_ADDSTRING, 0, text) < 0) return false;
    return SetWindowTextA(combo, Long_Text) && SendMessageA(combo, CB_FINDSTRINGEXACT, 0, text) == 0;
}

bool Fills_An_Edit() {
    const Dialog dialog;
    const HWND edit = dialog.Add("Edit");
    SendMessageA(edit, EM_REPLACESEL, 0, reinterpret_cast<LPARAM>(Long_Text));
    return GetWindowTextLengthA(edit) == sizeof Long_Text - 1;
}

bool Clicks() {
    const Dialog dialog;
    const HWND radio = dialog.Add("Button", BS_AUTORADIOBUTTON | WS_TABSTOP);
    return Click_Window(radio) && SendMessageA(radio, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool Draws() {
    const Dialog dialog;
    dialog.Add("ComboBox", CBS_DROPDOWNLIST);
    return Snapshot_Window(dialog, "/dev/null");
}

bool Menu_Comes_And_Goes() {
    const HMENU menu = CreateMenu();
    if (!menu) return false;
    const bool filled =
        AppendMenuA(menu, MF_STRING, 1, Long_Text) && ModifyMenuA(menu, 0, MF_BYPOSITION, 1, Long_Text);
    return DestroyMenu(menu) && filled;
}

bool Measures() {
    const LOGFONTA wanted = {};
    const HDC dc = GetDC(nullptr);
    if (!dc) return false;
    const HFONT font = CreateFontIndirectA(&wanted);
    ReleaseDC(nullptr, dc);
    return font && DeleteObject(font);
}

bool Bitmaps_Come_And_Go() {
    BITMAPINFO form = {};
    form.bmiHeader = {40, 9, 9, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    BYTE bits[28 * 9];
    void *rows;
    const LOGPALETTE wanted = {0x300, 1, {}};
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP plain = CreateBitmap(9, 9, 1, 8, nullptr);
    const HBITMAP section = CreateDIBSection(nullptr, &form, DIB_RGB_COLORS, &rows, nullptr, 0);
    const HPALETTE palette = CreatePalette(&wanted);
    bool done = dc && plain && section && palette;
    done = done && GetDIBits(dc, plain, 0, 9, bits, &form, DIB_RGB_COLORS) == 9;
    for (const HGDIOBJ made : {HGDIOBJ(plain), HGDIOBJ(section), HGDIOBJ(palette)}) {
        if (made) DeleteObject(made);
    }
    if (dc) DeleteDC(dc);
    return done;
}

bool Icons_Come_And_Go() {
    HICON icon, small;
    if (ExtractIconExA("c:\\kept.ico", 0, &icon, &small, 1) != 1) return false;
    ICONINFO info;
    const bool told = GetIconInfo(icon, &info);
    if (told) DeleteObject(info.hbmMask), DeleteObject(info.hbmColor);
    DestroyIcon(icon);
    DestroyIcon(small);
    return told;
}

bool With_Result(HRESULT result) {
    if (result == E_OUTOFMEMORY) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return result == S_OK;
}

bool Creates(REFCLSID clsid, DWORD context, REFIID iid) {
    IUnknown *made = nullptr;
    const bool done =
        With_Result(CoCreateInstance(clsid, nullptr, context, iid, reinterpret_cast<void **>(&made)));
    if (made) made->Release();
    return done;
}

bool Offers() {
    IMalloc *object = nullptr;
    DWORD cookie = 0;
    CoGetMalloc(1, &object);
    const bool done = With_Result(
        CoRegisterClassObject(IID_IMalloc, object, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie));
    return done && CoRevokeClassObject(cookie) == S_OK;
}

bool Shows_My_Computer() {
    IShellFolder *desktop, *my_computer = nullptr;
    IEnumIDList *items = nullptr, *copy = nullptr;
    LPITEMIDLIST place, item;
    STRRET name;
    SHGetDesktopFolder(&desktop);
    SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &place);
    HRESULT result =
        desktop->BindToObject(place, nullptr, IID_IShellFolder, reinterpret_cast<void **>(&my_computer));
    CoTaskMemFree(place);
    if (result == S_OK) result = my_computer->EnumObjects(nullptr, SHCONTF_FOLDERS, &items);
    if (result == S_OK) result = items->Clone(&copy);
    while (result == S_OK && copy->Next(1, &item, nullptr) == S_OK) {
        result = my_computer->GetDisplayNameOf(item, SHGDN_NORMAL, &name);
        if (result == S_OK && name.uType == STRRET_WSTR) CoTaskMemFree(name.pOleStr);
        CoTaskMemFree(item);
    }
    if (copy) copy->Release();
    if (items) items->Release();
    if (my_computer) my_computer->Release();
    return With_Result(result);
}

TEST_F(OutOfMemoryTest, Is_A_Code_Of_Windows_And_Objects_Too) {
    const std::string counter = "{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";
    TestKey("CLSID\\" + counter + "\\InProcServer32", HKEY_CLASSES_ROOT)
        .Set("", "z:" + Test_Module("com_class"));
    TestKey("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\" + counter,
            HKEY_LOCAL_MACHINE);
    machine.Write("drive_c/kept.ico", Icon_File({{16, 4}}, [](int, int, int) {
                      return RGBQUAD{1, 2, 3, 4};
                  }));
    SecondProcess server("service");
    ASSERT_NE(server.Hear(), "");
    CoInitialize(nullptr);
    Sweep({
        {"window class", Class_Comes_And_Goes},
        {"windows", Windows_Come_And_Go},
        {"text", Texts_Go_To_And_Fro},
        {"message", Posts},
        {"enumeration", Enumerates},
        {"windows seen", Sees_Windows},
        {"controls", Makes_Controls},
        {"lines", Fills_A_Combo_Box},
        {"edit", Fills_An_Edit},
        {"click", Clicks},
        {"picture", Draws},
        {"menu", Menu_Comes_And_Goes},
        {"measures", Measures},
        {"bitmaps", Bitmaps_Come_And_Go},
        {"icons", Icons_Come_And_Go},
        {"class", [] { return Creates(CLSID_TestCounter, CLSCTX_INPROC_SERVER, IID_ITestCounter); }},
        {"class of a server", [] { return Creates(CLSID_TestService, CLSCTX_LOCAL_SERVER, IID_IUnknown); }},
        {"classes seen", [] { return Visit_Machine_Classes([](auto...) { return true; }, nullptr) != 0; }},
        {"offer of a class", Offers},
        {"shell", Shows_My_Computer},
    });
    EXPECT_GE(points, 1000u); // some nine in ten of those that there are
    CoUninitialize();
    EXPECT_EQ(server.Wait(), 0) << "nothing was left in it";
}

} // namespace
