#include <tests/support/window_verbs.h>

namespace {

struct MessageName {
    UINT message;
    const char *name;
};

constexpr MessageName Message_Names[] = {
    {WM_CREATE, "WM_CREATE"},
    {WM_DESTROY, "WM_DESTROY"},
    {WM_MOVE, "WM_MOVE"},
    {WM_SIZE, "WM_SIZE"},
    {WM_ACTIVATE, "WM_ACTIVATE"},
    {WM_SETFOCUS, "WM_SETFOCUS"},
    {WM_KILLFOCUS, "WM_KILLFOCUS"},
    {WM_ENABLE, "WM_ENABLE"},
    {WM_SETTEXT, "WM_SETTEXT"},
    {WM_GETTEXT, "WM_GETTEXT"},
    {WM_SHOWWINDOW, "WM_SHOWWINDOW"},
    {WM_CANCELMODE, "WM_CANCELMODE"},
    {WM_WINDOWPOSCHANGING, "WM_WINDOWPOSCHANGING"},
    {WM_WINDOWPOSCHANGED, "WM_WINDOWPOSCHANGED"},
    {WM_NCCREATE, "WM_NCCREATE"},
    {WM_NCDESTROY, "WM_NCDESTROY"},
};

std::string Name_Of(UINT message) {
    for (const MessageName &each : Message_Names) {
        if (each.message == message) return each.name;
    }
    return std::to_string(message);
}

} // namespace

LRESULT TestWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        const auto &create = *reinterpret_cast<const CREATESTRUCTA *>(lparam);
        SetWindowLongA(window, GWL_USERDATA, reinterpret_cast<LONG>(create.lpCreateParams));
    }
    auto *self = reinterpret_cast<TestWindow *>(GetWindowLongA(window, GWL_USERDATA));
    if (self) {
        self->heard_ += (self->heard_.empty() ? "" : " ") + Name_Of(message);
        const auto answer =
            self->procedure_ ? self->procedure_(window, message, wparam, lparam) : std::nullopt;
        if (answer) return *answer;
    }
    return DefWindowProcA(window, message, wparam, lparam);
}

const char *TestWindow::Class() {
    WNDCLASSA test_class = {};
    test_class.lpfnWndProc = Procedure;
    test_class.lpszClassName = "Test Window";
    RegisterClassA(&test_class); // ERROR_CLASS_ALREADY_EXISTS from the second time on
    return test_class.lpszClassName;
}

HWND TestWindow::Make(DWORD style, HWND parent, const char *of_class) {
    return CreateWindowExA(0, of_class, "", style, 0, 0, 1, 1, parent, nullptr, nullptr, nullptr);
}

TestWindow::TestWindow(DWORD style, RECT place, HWND parent, int id, TestProcedure procedure,
                       const char *text)
    : procedure_(std::move(procedure)) {
    handle_ = CreateWindowExA(0, Class(), text, style, static_cast<int>(place.left),
                              static_cast<int>(place.top), static_cast<int>(place.right - place.left),
                              static_cast<int>(place.bottom - place.top), parent, reinterpret_cast<HMENU>(id),
                              nullptr, this);
}

TestWindow::~TestWindow() {
    if (!handle_ || !IsWindow(handle_)) return;
    procedure_ = nullptr;
    DestroyWindow(handle_);
}

std::string TestWindow::Heard() {
    return std::exchange(heard_, {});
}

std::string Text_Of(const RECT &r) {
    return std::to_string(r.left) + " " + std::to_string(r.top) + " " + std::to_string(r.right) + " " +
           std::to_string(r.bottom);
}

std::string Place_Of(HWND window) {
    RECT r = {};
    return GetWindowRect(window, &r) ? Text_Of(r) : "none";
}

std::string Client_Of(HWND window) {
    RECT r = {};
    return GetClientRect(window, &r) ? Text_Of(r) : "none";
}

std::string Title_Of(HWND window) {
    char title[4000];
    GetWindowTextA(window, title, sizeof title);
    return title;
}

void WindowTest::SetUp() {
    MachineTest::SetUp();
    windows_before_ = Window_Count();
    objects_before_ = Gdi_Object_Count();
    menus_before_ = Menu_Count();
    icons_before_ = Icon_Count();
}

void WindowTest::TearDown() {
    EXPECT_EQ(Window_Count(), windows_before_) << "windows left";
    EXPECT_EQ(Gdi_Object_Count(), objects_before_) << "objects of GDI left";
    EXPECT_EQ(Menu_Count(), menus_before_) << "menus left";
    EXPECT_EQ(Icon_Count(), icons_before_) << "icons left";
    MachineTest::TearDown();
}
