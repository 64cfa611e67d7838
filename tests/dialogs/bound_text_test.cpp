#include <tests/dialogs/binding_client.h>

namespace {

class BoundText : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        client.value = "first";
        edit = dialog.Add("Edit", "shown", {0, 0, 100, 20}, 0, 7);
        text = cache.GetTextControl();
        text->AttachTo(edit);
        text->Install_Client_Interface(&client);
    }
    std::string Shown() const {
        std::string shown(static_cast<std::size_t>(GetWindowTextLengthA(edit)) + 1, 0);
        GetWindowTextA(edit, shown.data(), static_cast<int>(shown.size()));
        return shown.c_str();
    }

    HWND edit = nullptr;
    CBoundTextControl *text = nullptr;
};

TEST_F(BoundText, Writes_At_Keys_Or_When_The_Focus_Leaves_And_When_Others_Set_It) {
    text->Binding_Changed();
    EXPECT_EQ(Shown() + client.Written(), "first");
    SetWindowTextA(edit, "by code");
    EXPECT_EQ(client.Written(), "[by code]");
    const struct {
        UINT message;
        WPARAM key;
        bool on_key, writes;
    } rows[] = {{WM_KEYUP, 36, true, true},     {WM_KEYUP, 37, true, false},   {WM_KEYUP, 40, true, false},
                {WM_KEYUP, 41, true, true},     {WM_KEYUP, 41, false, false},  {WM_KEYDOWN, 41, true, false},
                {WM_KILLFOCUS, 0, true, false}, {WM_KILLFOCUS, 0, false, true}};
    for (const auto &row : rows) {
        client.on_key = row.on_key;
        Tell(edit, row.message, row.key);
        EXPECT_EQ(client.Written(), row.writes ? "[by code]" : "") << row.message << " " << row.key;
    }
}

TEST_F(BoundText, Limits_Input_In_Either_Order_Of_Attaching) {
    constexpr LRESULT No_Limit = 0x7FFFFFFE;
    for (const bool window_first : {true, false}) {
        for (const long size : {11L, 1L, 0L, -1L}) {
            window_first ? text->Install_Client_Interface(nullptr) : text->Detach();
            EXPECT_EQ(Tell(edit, EM_GETLIMITTEXT), No_Limit) << "without either of them";
            text->Install_Client_Interface(nullptr), text->Detach();
            client.size = size;
            if (window_first) text->AttachTo(edit);
            text->Install_Client_Interface(&client);
            if (!window_first) text->AttachTo(edit);
            EXPECT_EQ(Tell(edit, EM_GETLIMITTEXT), size == 11 ? 10 : No_Limit) << size;
        }
    }
}

WNDPROC below_stranger = nullptr;

LRESULT Stranger(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return CallWindowProcA(below_stranger, window, message, wparam, lparam);
}

TEST_F(BoundText, Ends_Messages_That_Go_Round_With_A_Procedure_That_Put_Itself_Back) {
    const auto put_stranger = [this] {
        return SetWindowLongA(edit, GWL_WNDPROC, reinterpret_cast<LONG>(Stranger));
    };
    below_stranger = reinterpret_cast<WNDPROC>(put_stranger());
    cache.ReturnTextControl(text);
    SetWindowLongA(edit, GWL_WNDPROC, reinterpret_cast<LONG>(Stranger));
    text = cache.GetTextControl();
    text->AttachTo(edit); // whose procedure the stranger calls, which it calls
    SetWindowTextA(edit, "ends");
    EXPECT_EQ(Shown(), "ends");
}

TEST_F(BoundText, Takes_Values_Of_Every_Size_And_Clients_That_End_None) {
    for (const long size : {1L, 255L, 256L, 257L, 70000L}) {
        client.value = std::string(static_cast<std::size_t>(size) - 1, 'v');
        const long before = Requests();
        text->Binding_Changed();
        EXPECT_EQ(client.room, size);
        Tell(edit, WM_KEYUP, 'A');
        EXPECT_EQ(Requests() - before, size > 256 ? 2 : 0) << "only long values touch the allocator";
        EXPECT_EQ(client.Written(), "[" + std::string(static_cast<std::size_t>(size) - 1, 'v') + "]");
    }
    client.value = std::string(70000, 'e');
    for (const std::size_t size : {10, 256, 257, 70000}) {
        client.size = static_cast<long>(size);
        text->Binding_Changed();
        EXPECT_EQ(Shown(), std::string(size > 10 ? size - 1 : size, 'e'));
    }
    const FailingMemory failing(1, true);
    for (const long size : {-1L, -2L, 300L}) {
        client.size = size;
        text->Binding_Changed();
        EXPECT_EQ(Shown().size(), 69999u) << "stays as it was";
    }
    Tell(edit, WM_KEYUP, 'A');
    EXPECT_EQ(client.Written(), "");
}

TEST_F(BoundText, Is_Blank_And_Disabled_While_Invalid) {
    client.on_key = false;
    SetFocus(edit);
    text->Binding_Invalid();
    text->Binding_Changed();
    EXPECT_EQ(Shown() + client.Written(), "") << "it lost the focus, and a blank is no value";
    EXPECT_FALSE(IsWindowEnabled(edit));
    text->Binding_Valid();
    EXPECT_TRUE(IsWindowEnabled(edit));
    client.on_read = [&] { text->Binding_Invalid(); };
    text->Binding_Changed();
    EXPECT_EQ(Shown(), "") << "it went in the middle";
    text->Binding_Valid();
    client.on_key = true;
    client.on_ask = [&] { text->Binding_Invalid(); };
    Tell(edit, WM_KEYUP, 'A');
    EXPECT_EQ(client.Written(), "");
}

struct DerivedText : CBoundTextControl {
    using CBoundTextControl::Write_Binding;
    static long Procedure(HWND window, unsigned int message, unsigned int wparam, long lparam) {
        return ExternWndProc(window, message, wparam, lparam);
    }
    long GetWndProc() override { return reinterpret_cast<long>(Procedure); }
};

TEST_F(BoundText, Writes_From_Derived_Controls_And_Nothing_While_Invalid_Without_A_Window) {
    DerivedText derived;
    derived.Write_Binding();
    derived.Install_Client_Interface(&client);
    derived.Write_Binding();
    derived.Binding_Invalid();
    derived.Write_Binding();
    EXPECT_EQ(client.Written(), "[]");
    derived.AttachTo(edit);
    SetWindowTextA(edit, "by a procedure of its own");
    EXPECT_EQ(client.Written(), "[by a procedure of its own]");
}

} // namespace
