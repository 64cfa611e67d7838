#pragma once
// Windows for tests: a class whose procedure records what it is sent and may answer in its own way.
//
//     TestWindow dialog(WS_POPUP | WS_DLGFRAME, {10, 10, 110, 60});
//     TestWindow label(WS_CHILD, {0, 0, 20, 10}, dialog);
//     EXPECT_EQ(label.Heard(), "WM_NCCREATE WM_CREATE WM_SIZE WM_MOVE");

#include <platform/gdi.h>
#include <platform/machine.h>
#include <platform/user.h>
#include <tests/support/test_machine.h>

#include <functional>
#include <optional>
#include <string>

/// Answers a message in the default procedure's stead; nothing lets the default answer.
using TestProcedure = std::function<std::optional<LRESULT>(HWND, UINT, WPARAM, LPARAM)>;

class TestWindow {
  public:
    TestWindow(DWORD style, RECT place, HWND parent = nullptr, int id = 0, TestProcedure procedure = {},
               const char *text = "");
    ~TestWindow();
    TestWindow(const TestWindow &) = delete;
    TestWindow &operator=(const TestWindow &) = delete;

    operator HWND() const { return handle_; }
    /// The names of the messages since the last call, with a blank between them.
    std::string Heard();

    /// One that is not told anything, of a pixel; null with the last error.
    static HWND Make(DWORD style = WS_POPUP, HWND parent = nullptr, const char *of_class = Class());
    /// The class of all of them, registered at first need.
    static const char *Class();

  private:
    static LRESULT Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    HWND handle_ = nullptr;
    TestProcedure procedure_;
    std::string heard_;
};

/// "left top right bottom".
std::string Text_Of(const RECT &rectangle);
std::string Place_Of(HWND window);  // on the screen
std::string Client_Of(HWND window); // its client area
std::string Title_Of(HWND window);

/// No window, no menu, no icon and no object of GDI is left at the end.
class WindowTest : public MachineTest {
  protected:
    void SetUp() override;
    void TearDown() override;

  private:
    unsigned long windows_before_ = 0, objects_before_ = 0, menus_before_ = 0, icons_before_ = 0;
};
