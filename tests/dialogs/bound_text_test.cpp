#include <tests/dialogs/binding_client.h>

namespace {

class BoundText : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        edit = New_Edit();
    }
    HWND New_Edit() { return dialog.Add("Edit", "shown", {0, 0, 100, 20}, 0, 7); }
    void Bind() {
        text->AttachTo(edit);
        text->Install_Client_Interface(&client);
    }
    LRESULT Limit() const { return Tell(edit, EM_GETLIMITTEXT); }

    BindingClient client{"first"};
    HWND edit = nullptr;
    static constexpr LRESULT no_limit = 0x7FFFFFFE;
    CBoundTextControl *text = cache.GetTextControl();
};

TEST_F(BoundText, Writes_At_Keys_Or_When_The_Focus_Leaves_And_When_Others_Set_It) {
    Bind();
    text->Binding_Changed();
    EXPECT_EQ(Text_Of_Window(edit) + client.Written(), "first");
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
    client.on_key = true;
    SetFocus(edit);
    Tell(edit, EM_SETSEL, 0, -1);
    EXPECT_TRUE(Type_Text("ab"));
    EXPECT_EQ(client.Written(), "[a][ab]");
    text->Detach();
    Tell(edit, WM_KEYUP, 'A');
    text->Binding_Changed();
    EXPECT_EQ(client.Written(), "");
    EXPECT_EQ(Text_Of_Window(edit), "ab");
}

TEST_F(BoundText, Limits_Input_In_Either_Order_Of_Attaching) {
    for (const bool window_first : {true, false}) {
        for (const auto &[size, limit] : {std::pair{11L, 10L}, {1L, 0L}, {0L, 0L}, {-1L, 0L}}) {
            client.size = size;
            if (window_first) text->AttachTo(edit);
            text->Install_Client_Interface(&client);
            if (!window_first) text->AttachTo(edit);
            EXPECT_EQ(Limit(), limit ? limit : no_limit) << size;
            text->Install_Client_Interface(nullptr);
            text->Detach();
            EXPECT_EQ(Limit(), no_limit);
        }
    }
}

TEST_F(BoundText, Takes_Values_Of_Every_Size_And_Clients_That_End_None) {
    Bind();
    for (const long size : {1L, 255L, 256L, 257L, 300L, 70000L}) {
        client.value = std::string(static_cast<std::size_t>(size) - 1, 'v');
        const long before = Requests();
        text->Binding_Changed();
        EXPECT_EQ(client.room, size);
        Tell(edit, WM_KEYUP, 'A');
        EXPECT_EQ(Requests() - before, size > 256 ? 2 : 0) << "only long values touch the allocator";
        EXPECT_EQ(client.Written(), "[" + Text_Of_Window(edit) + "]");
        EXPECT_EQ(static_cast<long>(client.value.size()), size - 1);
    }
    const std::string endless(70000, 'e');
    for (const long size : {10L, 256L, 257L, 70000L}) {
        client.value = endless;
        client.size = size;
        text->Binding_Changed();
        EXPECT_EQ(Text_Of_Window(edit),
                  endless.substr(0, static_cast<std::size_t>(size > 10 ? size - 1 : 10)));
    }
    for (const long size : {-1L, -2L, 0x7FFFFFFFL}) {
        client.size = size;
        text->Binding_Changed();
        EXPECT_EQ(Text_Of_Window(edit).size(), 69999u) << "stays as it was";
    }
    const FailingMemory failing(1, true);
    client.size = 300;
    text->Binding_Changed();
    Tell(edit, WM_KEYUP, 'A');
    EXPECT_EQ(Text_Of_Window(edit).size(), 69999u);
    EXPECT_EQ(client.Written(), "");
}

TEST_F(BoundText, Is_Blank_And_Disabled_While_Invalid) {
    Bind();
    client.on_key = false;
    text->Binding_Changed();
    SetFocus(edit);
    ASSERT_EQ(GetFocus(), edit);
    text->Binding_Invalid();
    EXPECT_FALSE(IsWindowEnabled(edit));
    text->Binding_Changed();
    EXPECT_EQ(Text_Of_Window(edit), "");
    EXPECT_EQ(client.Written(), "") << "not when it is blanked, nor when it loses the focus to that";
    SetWindowTextA(edit, "x");
    EXPECT_EQ(client.Written(), "[x]") << "it has a window";
    text->Binding_Valid();
    text->Binding_Changed();
    EXPECT_TRUE(IsWindowEnabled(edit));
    EXPECT_EQ(Text_Of_Window(edit), "x");
    client.on_read = [&] { text->Binding_Invalid(); };
    text->Binding_Changed();
    EXPECT_EQ(Text_Of_Window(edit), "") << "it went in the middle";
}

struct WritingText : CBoundTextControl {
    using CBoundTextControl::Write_Binding;
};

TEST_F(BoundText, Without_A_Window_Is_Kept_From_Writing_By_Being_Invalid_Alone) {
    WritingText unattached;
    unattached.Write_Binding();
    unattached.Install_Client_Interface(&client);
    unattached.Write_Binding();
    EXPECT_EQ(client.Written(), "[]");
    unattached.Binding_Invalid();
    unattached.Write_Binding();
    EXPECT_EQ(client.Written(), "");
}

// What may happen in the middle of a call of ours.
TEST_F(BoundText, Stands_Calls_Back_From_Its_Client_And_Its_Window) {
    const std::function<void()> calls_back[] = {
        [&] { text->Binding_Changed(); }, [&] { text->Binding_Invalid(); },
        [&] { text->Detach(); },          [&] { text->Install_Client_Interface(nullptr); },
        [&] { DestroyWindow(edit); },     [&] { cache.ReturnTextControl(std::exchange(text, nullptr)); },
    };
    const std::function<void()> starts[] = {
        [&] { text->Binding_Changed(); },  [&] { text->Install_Client_Interface(&client); },
        [&] { text->Binding_Invalid(); },  [&] { Tell(edit, WM_KEYUP, 'A'); },
        [&] { Tell(edit, WM_KILLFOCUS); }, [&] { SetWindowTextA(edit, "set"); },
    };
    std::function<void()> BindingClient::*const places[] = {&BindingClient::on_read, &BindingClient::on_write,
                                                            &BindingClient::on_size, &BindingClient::on_ask};
    for (const auto &call_back : calls_back) {
        for (int start = 0; start < 6; ++start) {
            for (int place = 0; place < 5; ++place) { // the last is the window's notice
                int depth = 0;
                const auto once = [&] {
                    if (text && ++depth == 1) call_back();
                };
                client = BindingClient(std::string(299, 'v'));
                client.on_key = start != 4;
                Bind();
                if (place < 4)
                    client.*places[place] = once;
                else
                    dialog.on_notice = [&](int, UINT) { once(); };
                starts[start]();
                dialog.on_notice = nullptr;
                cache.ReturnTextControl(text);
                DestroyWindow(edit);
                edit = New_Edit();
                text = cache.GetTextControl();
                EXPECT_EQ(client.Written().find("[]"), std::string::npos) << "a value was lost: " << start << place;
            }
        }
    }
    dialog.on_notice = [&](int, UINT) { throw 5; };
    Bind();
    EXPECT_THROW(text->Binding_Changed(), int);
    dialog.on_notice = nullptr;
    SetWindowTextA(edit, "later");
    EXPECT_EQ(client.Written(), "[later]") << "no longer being updated";
}

} // namespace
