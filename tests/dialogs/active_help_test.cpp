#include <kelmara/dialogs/active_help.h>
#include <kelmara/dialogs/window_user_data.h>

#include <tests/support/control_verbs.h>
#include <tests/support/test_memory.h>

#include <memory>
#include <stdexcept>

namespace {

constexpr UINT Ask = WM_APP + 1; // answered by the old procedure in its own way

long Procedure_Of(HWND window) {
    return GetWindowLongA(window, GWL_WNDPROC);
}

std::function<LRESULT(HWND)> in_old_procedure;

LRESULT Old_Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != Ask) return DefWindowProcA(window, message, wparam, lparam);
    return in_old_procedure ? in_old_procedure(window) : static_cast<LRESULT>(wparam) + lparam;
}

class ActiveHelp : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        dialog.emplace(DWORD{WS_POPUP | WS_VISIBLE}, RECT{0, 0, 100, 100});
        pane.emplace(DWORD{WS_CHILD}, RECT{0, 80, 100, 100}, *dialog);
        a = Child(0);
        b = Child(30);
        help = std::make_unique<CActiveHelpManager>();
        help->Initialize(*pane);
        pane->Heard();
    }
    void TearDown() override {
        pane.reset();
        dialog.reset();
        help.reset();
        in_old_procedure = nullptr;
        WindowTest::TearDown();
    }
    HWND Child(int x) const {
        const HWND child = CreateWindowExA(0, "Static", "", WS_CHILD | WS_VISIBLE, x, 0, 20, 20, *dialog,
                                           nullptr, nullptr, nullptr);
        SetWindowLongA(child, GWL_WNDPROC, old_procedure);
        return child;
    }

    const long old_procedure = reinterpret_cast<long>(Old_Procedure);
    NoLeak no_leak;
    std::optional<TestWindow> dialog, pane;
    HWND a = nullptr, b = nullptr;
    std::unique_ptr<CActiveHelpManager> help;
};

TEST_F(ActiveHelp, The_Pane_Follows_The_Pointer) {
    const std::string long_text(300, 'x');
    help->AddControl(a, "about a");
    help->AddControl(b, long_text.c_str());
    struct Step {
        LONG x, y;
        std::string title, heard; // the pane's
    };
    const std::string shown = "WM_SETTEXT WM_GETTEXT";
    for (const Step &step : {Step{70, 70, "", "WM_GETTEXT"},
                             {5, 5, "about a", shown},
                             {6, 6, "about a", "WM_GETTEXT"},
                             {35, 5, long_text.substr(0, 255), shown},
                             {70, 70, long_text.substr(0, 255), "WM_GETTEXT"},
                             {5, 5, "about a", shown}}) {
        EXPECT_TRUE(Point_At(step.x, step.y));
        EXPECT_EQ(Title_Of(*pane), step.title);
        EXPECT_EQ(pane->Heard(), step.heard) << step.x;
    }
    SetWindowTextA(*pane, "other");
    help->Initialize(*pane);
    Point_At(6, 6);
    EXPECT_EQ(Title_Of(*pane), "about a") << "the first one sets it in any case";
    help->Initialize(b);
    Point_At(5, 5);
    EXPECT_EQ(Title_Of(b), "about a");
}

TEST_F(ActiveHelp, Messages_Go_To_The_Old_Procedure_And_The_Subclass_Stays) {
    help->AddControl(a, "help");
    const long subclass = Procedure_Of(a);
    ASSERT_NE(subclass, old_procedure);
    EXPECT_EQ(GetWindowUserData(a, 2), subclass);
    EXPECT_EQ(SendMessageA(a, Ask, 40, 2), 42);
    in_old_procedure = [&](HWND window) -> LRESULT {
        EXPECT_EQ(Procedure_Of(window), old_procedure);
        in_old_procedure = nullptr;
        SendMessageA(window, WM_SETCURSOR, 0, 0); // past the subclass
        EXPECT_EQ(Title_Of(*pane), "");
        const auto through = reinterpret_cast<WNDPROC>(subclass);
        EXPECT_EQ(CallWindowProcA(through, window, Ask, 3, 4), 7) << "nested, in it once more";
        EXPECT_EQ(Procedure_Of(window), old_procedure) << "only the outermost comes and goes";
        return 5;
    };
    EXPECT_EQ(SendMessageA(a, Ask, 0, 0), 5);
    EXPECT_EQ(Procedure_Of(a), subclass);
    in_old_procedure = [](HWND) -> LRESULT { throw std::runtime_error("from the old procedure"); };
    EXPECT_THROW(SendMessageA(a, Ask, 0, 0), std::runtime_error);
    EXPECT_EQ(Procedure_Of(a), subclass);
    Point_At(5, 5);
    EXPECT_EQ(Title_Of(*pane), "help");
}

TEST_F(ActiveHelp, Windows_And_Manager_May_Go_In_Any_Order) {
    help->AddControl(a, "a");
    help->AddControl(b, "b");
    in_old_procedure = [](HWND window) -> LRESULT {
        DestroyWindow(window);
        return 9;
    };
    EXPECT_EQ(SendMessageA(a, Ask, 0, 0), 9);
    EXPECT_FALSE(IsWindow(a));
    help.reset();
    in_old_procedure = nullptr;
    EXPECT_EQ(SendMessageA(b, Ask, 40, 2), 0) << "dropped";
    EXPECT_TRUE(IsWindow(b));
    CActiveHelpManager next;
    next.AddControl(b, "again");
    EXPECT_EQ(SendMessageA(b, Ask, 40, 2), 0) << "what it was before is lost";
    DestroyWindow(b);
}

TEST_F(ActiveHelp, The_Manager_May_Go_In_A_Message) {
    void *const shared = InsertWindowUserData(a, 0, nullptr); // a bound control's
    help->AddControl(a, "a");
    in_old_procedure = [&](HWND) -> LRESULT {
        help.reset();
        return 6;
    };
    EXPECT_EQ(SendMessageA(a, Ask, 0, 0), 6);
    EXPECT_EQ(GetWindowUserData(a, 1), 0);
    EXPECT_EQ(Procedure_Of(a), old_procedure);
    CActiveHelpManager next;
    next.Initialize(*pane);
    next.AddControl(a, "again");
    Point_At(5, 5);
    EXPECT_EQ(Title_Of(*pane), "again");
    DestroyWindow(a);
    DeleteWindowUserData(shared);
}

TEST_F(ActiveHelp, Nothing_Is_Added_Without_A_Window_Or_Twice) {
    help->AddControl(nullptr, "none");
    help->AddControl(a, "first");
    help->AddControl(a, "second");
    in_old_procedure = [this](HWND window) -> LRESULT {
        help->AddControl(window, "third");
        return 0;
    };
    SendMessageA(a, Ask, 0, 0);
    in_old_procedure = nullptr;
    help->AddControl(b, nullptr);
    EXPECT_EQ(SendMessageA(a, Ask, 40, 2), 42);
    Point_At(5, 5);
    EXPECT_EQ(Title_Of(*pane), "first");
    Point_At(35, 5);
    EXPECT_EQ(Title_Of(*pane), "");
}

} // namespace
