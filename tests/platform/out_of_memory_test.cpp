// Memory that runs out inside a call of the machine: a code, never an exception, and nothing is left behind.

#include <platform/com.h>
#include <platform/files.h>
#include <platform/gdi.h>
#include <platform/kernel.h>
#include <platform/local_memory.h>
#include <platform/machine.h>
#include <platform/machine_contents.h>
#include <platform/registry.h>
#include <platform/runtime.h>
#include <platform/security.h>
#include <platform/shell.h>
#include <platform/user.h>
#include <reference_suite/installer/icon_file.h>
#include <tests/modules/com_class.h>
#include <tests/support/failing_new.h>
#include <tests/support/file_verbs.h>
#include <tests/support/test_machine.h>

#include <functional>
#include <optional>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

struct Call {
    const char *name;
    std::function<bool()> succeeds; // cleans up what it made
};

struct OutOfMemoryTest : FileTest {
    // True when the failure came to pass.
    bool Run_With_Failure(const Call &call, unsigned long at, bool for_ever) {
        std::optional<bool> done;
        SetLastError(NO_ERROR);
        fails_for_ever = for_ever;
        allocations_until_failure = at;
        try {
            done = call.succeeds();
        } catch (...) {
        }
        const bool reached = allocations_until_failure == 0 || (for_ever && allocations_until_failure == 1);
        allocations_until_failure = 0;
        const DWORD error = GetLastError();
        EXPECT_TRUE(done) << call.name << " let an exception out at allocation " << at;
        if (done == false) {
            EXPECT_EQ(error, static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY))
                << call.name << " at allocation " << at;
            EXPECT_TRUE(reached) << call.name << " failed with enough memory";
        }
        return reached;
    }
};

bool Closed(HANDLE handle) {
    return handle && CloseHandle(handle);
}

bool With_Code(LONG error) {
    SetLastError(static_cast<DWORD>(error));
    return error == ERROR_SUCCESS;
}

bool Starts_A_Thread() {
    const auto thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, 0, [](void *) { return 0u; }, nullptr, 0, nullptr));
    if (thread) WaitForSingleObject(thread, INFINITE);
    return Closed(thread);
}

bool Finds(const char *pattern) {
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(pattern, &data);
    if (find == INVALID_HANDLE_VALUE) return false;
    bool all = true;
    while (FindNextFileA(find, &data)) {
    }
    all = GetLastError() == static_cast<DWORD>(ERROR_NO_MORE_FILES);
    const DWORD error = GetLastError();
    FindClose(find);
    SetLastError(error);
    return all;
}

bool Maps() {
    const HANDLE mapping =
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 100, "Scarce");
    if (!mapping) return false;
    void *view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
    if (view) UnmapViewOfFile(view);
    CloseHandle(mapping);
    return view != nullptr;
}

bool Tells_Groups() {
    HANDLE token;
    BYTE groups[1024];
    DWORD size;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    const bool told = GetTokenInformation(token, TokenGroups, groups, sizeof groups, &size);
    CloseHandle(token);
    return told;
}

bool Starts_A_Process() {
    char command[] = "z:\\bin\\true";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started;
    if (!CreateProcessA(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
        return false;
    WaitForSingleObject(started.hProcess, INFINITE);
    CloseHandle(started.hProcess);
    return CloseHandle(started.hThread);
}

bool Loads() {
    const HMODULE module = LoadLibraryA("z:" TEST_MODULE_FOLDER "/plain.so");
    if (!module) return false;
    char path[MAX_PATH];
    const bool works = GetProcAddress(module, "Plain_Export_Of_No_Module") ||
                       GetLastError() != static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY);
    const bool named = GetModuleFileNameA(module, path, sizeof path) != 0;
    const DWORD error = GetLastError();
    FreeLibrary(module);
    SetLastError(error);
    return works && named;
}

bool failed_load_left_a_module = false;

bool Loads_What_Answers() {
    constexpr char Path[] = "z:" TEST_MODULE_FOLDER "/talkative.so";
    const HMODULE module = LoadLibraryA(Path);
    const DWORD error = GetLastError();
    failed_load_left_a_module |= !module && GetModuleHandleA(Path);
    SetLastError(error);
    return module && FreeLibrary(module);
}

bool Loads_As_Data() {
    const HMODULE module =
        LoadLibraryExA("z:" TEST_MODULE_FOLDER "/plain.so", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    return module && FreeLibrary(module);
}

bool Opens_And_Deletes() {
    FILE *stream = Machine_Open_Stream("c:\\scarce.txt", "wb");
    if (!stream) return false;
    Machine_Close_Stream(stream);
    return DeleteFileA("c:\\scarce.txt");
}

bool Renames_One_Way_Or_The_Other() {
    if (Machine_Rename("c:\\here.txt", "c:\\there.txt") == 0) return true;
    return errno == ENOENT && Machine_Rename("c:\\there.txt", "c:\\here.txt") == 0;
}

bool Folder_Comes_And_Goes() {
    const bool made = CreateDirectoryA("c:\\scarce", nullptr);
    return (made || GetLastError() == static_cast<DWORD>(ERROR_ALREADY_EXISTS)) &&
           RemoveDirectoryA("c:\\scarce");
}

bool Key_Comes_And_Goes() {
    HKEY key;
    LONG error =
        RegCreateKeyExA(HKEY_CURRENT_USER, "Scarce", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (error) return With_Code(error);
    error = RegSetValueExA(key, "value", 0, REG_SZ, reinterpret_cast<const BYTE *>("text"), 5);
    if (!error) error = RegFlushKey(key);
    char path[100];
    DWORD size = sizeof path;
    if (!error) error = Registry_Key_Path(key, path, &size);
    RegCloseKey(key);
    return With_Code(error ? error : RegDeleteKeyA(HKEY_CURRENT_USER, "Scarce"));
}

LRESULT Plain_Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return DefWindowProcA(window, message, wparam, lparam);
}

bool Class_Comes_And_Goes() {
    WNDCLASSA scarce = {};
    scarce.lpfnWndProc = Plain_Procedure;
    scarce.lpszClassName = "A class with a name that needs memory";
    return RegisterClassA(&scarce) && UnregisterClassA(scarce.lpszClassName, nullptr);
}

// What memory fails is the making; taking away needs none.
bool Windows_Come_And_Go() {
    const HWND window =
        CreateWindowExA(0, "#32770", "A title that is long enough to need memory of its own",
                        WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    if (!window) return false;
    const HWND child = CreateWindowExA(0, "#32770", "", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9, window, nullptr,
                                       nullptr, nullptr);
    const DWORD error = GetLastError();
    const bool gone = DestroyWindow(window) && !Window_Count();
    SetLastError(error);
    return child && gone;
}

bool Texts_Go_To_And_Fro(HWND window) {
    char text[100];
    if (!SetWindowTextA(window, "Another title that is long enough to need memory of its own")) return false;
    return GetWindowTextA(window, text, sizeof text) == 59;
}

bool Posts(HWND window) {
    MSG message;
    if (!PostMessageA(window, WM_USER, 0, 0)) return false;
    return PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);
}

bool Enumerates(HWND window) {
    return EnumChildWindows(
        window, [](HWND, LPARAM) { return TRUE; }, 0);
}

// With a window that was made with memory enough.
bool With_Window(bool (*succeeds)(HWND)) {
    const unsigned long failure = std::exchange(allocations_until_failure, 0);
    const HWND window =
        CreateWindowExA(0, "#32770", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    CreateWindowExA(0, "#32770", "", WS_CHILD, 0, 0, 9, 9, window, nullptr, nullptr, nullptr);
    allocations_until_failure = failure;
    const bool done = succeeds(window);
    const DWORD error = GetLastError();
    const unsigned long left = std::exchange(allocations_until_failure, 0);
    DestroyWindow(window);
    allocations_until_failure = left;
    SetLastError(error);
    return done;
}

// A control of that dialog, made with memory enough.
HWND Made(HWND dialog, const char *control_class, DWORD style) {
    const unsigned long failure = std::exchange(allocations_until_failure, 0);
    const HWND control = CreateWindowExA(0, control_class, "", WS_CHILD | WS_VISIBLE | style, 0, 0, 90, 90,
                                         dialog, nullptr, nullptr, nullptr);
    ShowWindow(dialog, SW_SHOW);
    MoveWindow(dialog, 0, 0, 200, 200, FALSE);
    allocations_until_failure = failure;
    return control;
}

constexpr char Long_Text[] = "A text that is long enough to need memory of its own, twice over";

bool Makes_Controls(HWND dialog) {
    for (const char *each : {"Static", "Button", "Edit", "ListBox", "ComboBox", "ComboBoxEx32"}) {
        if (!CreateWindowExA(0, each, Long_Text, WS_CHILD | CBS_DROPDOWN, 0, 0, 90, 90, dialog, nullptr,
                             nullptr, nullptr))
            return false;
    }
    return true;
}

bool Fills_A_Combo_Box(HWND dialog) {
    const HWND combo = Made(dialog, "ComboBoxEx32", CBS_DROPDOWN);
    const auto text = reinterpret_cast<LPARAM>(Long_Text);
    if (SendMessageA(combo, CB_ADDSTRING, 0, text) < 0) return false;
    return SetWindowTextA(combo, Long_Text) && SendMessageA(combo, CB_FINDSTRINGEXACT, 0, text) == 0;
}

bool Fills_An_Edit(HWND dialog) {
    const HWND edit = Made(dialog, "Edit", 0);
    SendMessageA(edit, EM_REPLACESEL, 0, reinterpret_cast<LPARAM>(Long_Text));
    return GetWindowTextLengthA(edit) == sizeof Long_Text - 1;
}

bool Clicks(HWND dialog) {
    return Click_Window(Made(dialog, "Button", BS_AUTORADIOBUTTON | WS_TABSTOP));
}

bool Draws(HWND dialog) {
    Made(dialog, "ComboBox", CBS_DROPDOWNLIST);
    return Snapshot_Window(dialog, "/dev/null");
}

bool Menu_Comes_And_Goes() {
    const HMENU menu = CreateMenu();
    if (!menu) return false;
    const bool filled =
        AppendMenuA(menu, MF_STRING, 1, Long_Text) && ModifyMenuA(menu, 0, MF_BYPOSITION, 1, Long_Text);
    const DWORD error = GetLastError();
    const bool gone = DestroyMenu(menu) && !Menu_Count();
    SetLastError(error);
    return filled && gone;
}

bool Measures() {
    const LOGFONTA wanted = {};
    const HDC dc = GetDC(nullptr);
    if (!dc) return false;
    const HFONT font = CreateFontIndirectA(&wanted);
    const DWORD error = GetLastError();
    ReleaseDC(nullptr, dc);
    if (font) DeleteObject(font);
    SetLastError(error);
    return font != nullptr;
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
    const DWORD error = GetLastError();
    for (const HGDIOBJ made : {HGDIOBJ(plain), HGDIOBJ(section), HGDIOBJ(palette)}) {
        if (made) DeleteObject(made);
    }
    if (dc) DeleteDC(dc);
    EXPECT_EQ(Gdi_Object_Count(), 0u);
    SetLastError(error);
    return done;
}

bool Icons_Come_And_Go() {
    HICON icon, small;
    if (ExtractIconExA("c:\\kept.ico", 0, &icon, &small, 1) != 1) return false;
    ICONINFO info;
    const bool told = GetIconInfo(icon, &info);
    const DWORD error = GetLastError();
    if (told) DeleteObject(info.hbmMask), DeleteObject(info.hbmColor);
    DestroyIcon(icon);
    DestroyIcon(small);
    EXPECT_EQ(Gdi_Object_Count() + Icon_Count(), 0u);
    SetLastError(error);
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

constexpr char Shown_Class[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace\\"
    "{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}";

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

// The module's class, and the same from a server, which is a thread of its own. Other threads lack nothing.
struct ServedClass {
    ServedClass() {
        constexpr char Module[] = "z:" TEST_MODULE_FOLDER "/com_class.so";
        HKEY key;
        RegCreateKeyExA(HKEY_CLASSES_ROOT, "CLSID\\{5B0A3A10-77C1-4D0E-9122-3F5E016C2001}\\InProcServer32", 0,
                        nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        RegSetValueExA(key, "", 0, REG_SZ, reinterpret_cast<const BYTE *>(Module), sizeof Module);
        RegCloseKey(key);
        CoInitialize(nullptr);
        thread = std::thread([this] { Serve(); });
        while (!ready) Sleep(1);
    }
    ~ServedClass() {
        PostThreadMessageA(ready, WM_QUIT, 0, 0);
        thread.join();
        CoUninitialize();
    }
    void Serve() {
        CoInitialize(nullptr);
        IUnknown *factory = nullptr;
        CoGetClassObject(CLSID_TestCounter, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                         reinterpret_cast<void **>(&factory));
        DWORD cookie;
        CoRegisterClassObject(CLSID_TestCounter, factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
        factory->Release();
        ready = static_cast<DWORD>(gettid());
        MSG message;
        while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
        CoUninitialize();
    }
    std::atomic<DWORD> ready{0};
    std::thread thread;
};

TEST_F(OutOfMemoryTest, Each_Failing_Allocation_Is_A_Code_And_Leaves_No_Handle) {
    char text[MAX_PATH];
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    const Call calls[] = {
        {"attributes", [] { return GetFileAttributesA("c:\\") != INVALID_FILE_ATTRIBUTES; }},
        {"set attributes", [] { return SetFileAttributesA("c:\\kept.txt", FILE_ATTRIBUTE_NORMAL) != FALSE; }},
        {"current directory",
         [&] { return SetCurrentDirectoryA("c:\\") && GetCurrentDirectoryA(sizeof text, text); }},
        {"change directory",
         [&] { return Machine_Change_Directory("c:\\") == 0 && Machine_Get_Directory(text, sizeof text); }},
        {"folder", Folder_Comes_And_Goes},
        {"file", Opens_And_Deletes},
        {"rename", Renames_One_Way_Or_The_Other},
        {"search", [] { return Finds("c:\\*.*"); }},
        {"search for a name", [] { return Finds("c:\\kept.txt"); }},
        {"free space",
         [] {
             return GetDiskFreeSpaceA("c:\\", nullptr, nullptr, nullptr, nullptr) &&
                    GetDiskFreeSpaceExA("c:\\", nullptr, nullptr, nullptr);
         }},
        {"drives",
         [&] { return GetLogicalDriveStringsA(sizeof text, text) && GetDriveTypeA("c:\\") == DRIVE_FIXED; }},
        {"folders of the system",
         [&] {
             return GetTempPathA(sizeof text, text) && GetWindowsDirectoryA(text, sizeof text) &&
                    GetSystemDirectoryA(text, sizeof text);
         }},
        {"profile",
         [&] { return GetPrivateProfileStringA("s", "k", "none", text, sizeof text, "c:\\kept.ini") == 5; }},
        {"version", [&] { return GetVersionExA(&version) != FALSE; }},
        {"token", Tells_Groups},
        {"mutex", [] { return Closed(CreateMutexA(nullptr, TRUE, "Scarce lock")); }},
        {"mutex without a name", [] { return Closed(CreateMutexA(nullptr, TRUE, nullptr)); }},
        {"event", [] { return Closed(CreateEventA(nullptr, TRUE, FALSE, "Scarce event")); }},
        {"event without a name", [] { return Closed(CreateEventA(nullptr, TRUE, FALSE, nullptr)); }},
        {"start of a thread", Starts_A_Thread},
        {"mapping", Maps},
        {"local block",
         [] {
             const HLOCAL block = LocalAlloc(LMEM_ZEROINIT, 10);
             return block && LocalSize(block) == 10 && !LocalFree(block);
         }},
        {"process", [] { return Closed(OpenProcess(PROCESS_ALL_ACCESS, FALSE, GetCurrentProcessId())); }},
        {"start of a process", Starts_A_Process},
        {"module", Loads},
        {"module that answers", Loads_What_Answers},
        {"module as data", Loads_As_Data},
        {"module by name", [] { return GetModuleHandleA("kernel32.dll") != nullptr; }},
        {"registry", Key_Comes_And_Goes},
        {"window class", Class_Comes_And_Goes},
        {"windows", Windows_Come_And_Go},
        {"text", [] { return With_Window(Texts_Go_To_And_Fro); }},
        {"message", [] { return With_Window(Posts); }},
        {"enumeration", [] { return With_Window(Enumerates); }},
        {"measures", Measures},
        {"bitmaps", Bitmaps_Come_And_Go},
        {"icons", Icons_Come_And_Go},
        {"controls", [] { return With_Window(Makes_Controls); }},
        {"lines", [] { return With_Window(Fills_A_Combo_Box); }},
        {"edit", [] { return With_Window(Fills_An_Edit); }},
        {"click", [] { return With_Window(Clicks); }},
        {"picture", [] { return With_Window(Draws); }},
        {"menu", Menu_Comes_And_Goes},
        {"class", [] { return Creates(CLSID_TestCounter, CLSCTX_INPROC_SERVER, IID_ITestCounter); }},
        {"class of a server", [] { return Creates(CLSID_TestCounter, CLSCTX_LOCAL_SERVER, IID_IUnknown); }},
        {"offer of a class", Offers},
        {"shell", Shows_My_Computer},
        {"setting", [&] { return Get_Machine_Setting("windows", text, sizeof text); }},
        {"blocks seen",
         [] {
             return Visit_Machine_Blocks([](const MachineBlock *, void *) { return true; }, nullptr) != 0;
         }},
        {"windows seen",
         [] {
             return Visit_Machine_Windows([](const MachineTopWindow *, void *) { return true; }, nullptr) !=
                    0;
         }},
        {"classes seen",
         [] {
             return Visit_Machine_Classes([](const MachineClass *, void *) { return true; }, nullptr) != 0;
         }},
        {"mapping seen", [&] { return Copy_Machine_Mapping("Seen", text, sizeof text) > 0; }},
        {"registry seen",
         [] {
             MachineRegistry registry;
             return With_Code(Look_At_Registry(&registry));
         }},
        {"registry copied", [&] { return With_Code(Copy_Registry(machine.Path("copy").c_str())); }},
        {"registry mended", [] { return With_Code(Mend_Registry()); }},
        {"paths",
         [&] {
             return Host_Path("c:\\kept.txt", text, sizeof text) && Windows_Path("/", text, sizeof text);
         }},
    };
    machine.Write("drive_c/kept.txt", "kept");
    machine.Write("copy/file", "");
    const HANDLE seen = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 10, "Seen");
    machine.Write("drive_c/here.txt", "");
    machine.Write("drive_c/kept.ini", "[s]\nk=value\n");
    machine.Write("drive_c/kept.ico", Icon_File({{16, 4}}, [](int, int, int) {
                      return RGBQUAD{1, 2, 3, 4};
                  }));
    machine.Set("windows", "xp");
    const ServedClass served;
    HKEY shown;
    RegCreateKeyExA(HKEY_LOCAL_MACHINE, Shown_Class, 0, nullptr, 0, KEY_READ, nullptr, &shown, nullptr);
    RegCloseKey(shown);
    unsigned long points = 0;
    for (const Call &call : calls) {
        ASSERT_TRUE(call.succeeds()) << call.name; // what it needs once is there now
        const unsigned long handles = Open_Handle_Count();
        for (const bool for_ever : {false, true}) {
            unsigned long at = 1;
            while (Run_With_Failure(call, at, for_ever)) ++at;
            points += at - 1;
        }
        EXPECT_EQ(Open_Handle_Count(), handles) << call.name;
        EXPECT_TRUE(call.succeeds()) << call.name << " no longer works";
    }
    CloseHandle(seen);
    EXPECT_FALSE(failed_load_left_a_module);
    RecordProperty("fault_points", static_cast<int>(points));
    EXPECT_GT(points, 100u);
}

} // namespace
