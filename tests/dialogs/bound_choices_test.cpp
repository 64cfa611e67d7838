// The bound checkbox, radio group, combo box and list box.

#include <tests/dialogs/binding_client.h>

namespace {

void Work_Off_Queue() {
    for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageA(&message);
}

using BoundCheckbox = BindingTest;
using BoundRadioGroup = BindingTest;
using BoundComboBox = BindingTest;

TEST_F(BoundCheckbox, Is_Checked_By_One_Word_And_Written_By_Two) {
    const HWND box = dialog.Add("Button", "", {0, 0, 90, 20}, BS_AUTO3STATE);
    CBoundCheckboxControl *const control = cache.GetCheckboxControl();
    control->AttachTo(box);
    control->Binding_Changed();
    control->Clicked();
    control->Install_Client_Interface(&client);
    for (const bool opposite : {false, true}) {
        if (opposite) control->OppositeBind();
        for (const char *value :
             {"TRUE", "true", "FALSE", "", "TRUE ", "a word without an end in its room"}) {
            client.value = value;
            control->Binding_Changed();
            EXPECT_EQ(Tell(box, BM_GETCHECK) == 1, (client.value == "TRUE") != opposite) << value;
        }
        EXPECT_EQ(client.room, 16);
        Tell(box, BM_SETCHECK, BST_UNCHECKED);
        for (int click = 0; click < 3; ++click) Tell(box, BM_CLICK);
        Tell(box, WM_NULL);
        EXPECT_EQ(client.Written(),
                  opposite ? "[TRUE][FALSE][FALSE][TRUE][TRUE]" : "[FALSE][TRUE][TRUE][FALSE][FALSE]");
    }
    control->Binding_Invalid();
    Tell(box, BM_SETCHECK, BST_CHECKED);
    EXPECT_EQ(client.Written(), "");
}

TEST_F(BoundRadioGroup, Checks_The_Button_Of_The_Value_And_Writes_That_Of_The_Button) {
    HWND buttons[3];
    for (int id = 0; id < 3; ++id)
        buttons[id] = dialog.Add("Button", "", {0, 30L * id, 90, 30L * id + 20}, BS_AUTORADIOBUTTON, id);
    CBoundRadioGroupControl *const group =
        cache.GetRadioGroupControl(New_List({0, 99, 1, 2}), New_List({"zero", "gone", "one"}));
    const auto checked = [&] {
        std::string all;
        for (const HWND button : buttons) all += std::to_string(Tell(button, BM_GETCHECK));
        return all;
    };
    EXPECT_FALSE(group->AttachTo(buttons[0]));
    group->Setup_Bound_Notifiers(dialog);
    Tell(buttons[2], BM_SETCHECK, 1); // it has no value, and there is no client
    group->Install_Client_Interface(&client);
    for (const auto &[value, then] :
         {std::pair{"one", "010"}, {"ONE", "000"}, {"zero", "100"}, {"gone", "000"}}) {
        client.value = value;
        group->Binding_Changed();
        EXPECT_EQ(checked(), then) << value;
    }
    for (const int button : {1, 0, 2}) EXPECT_TRUE(Click_Window(buttons[button]));
    EXPECT_EQ(client.Written(), "[one][zero]") << "nothing for those that went out";
    group->Clicked(nullptr);
    group->Clicked(dialog);
    group->Binding_Invalid();
    group->Binding_Changed();
    EXPECT_EQ(checked() + client.Written(), "001");
    Tell(buttons[1], BM_SETCHECK, 1);
    EXPECT_EQ(client.Written(), "[one]") << "clicks do not ask whether the value is valid";
    group->Binding_Valid();
    for (const long nth : {1, 2}) { // the first button's notifier and its record
        {
            const FailingMemory failing(nth);
            group->Setup_Bound_Notifiers(dialog);
        }
        for (const HWND button : buttons) Tell(button, BM_SETCHECK, 1);
        EXPECT_EQ(client.Written(), "[one]") << "buttons and values keep in step";
    }
    cache.ReturnRadioGroupControl(nullptr);
    cache.ReturnRadioGroupControl(group);
}

TEST_F(BoundComboBox, Shows_Values_And_Writes_What_Is_Typed_Or_Chosen) {
    const struct {
        const char *window_class;
        DWORD style;
        bool takes_new_ones;
        const char *written; // of typing and choosing
    } rows[] = {{"ComboBox", CBS_DROPDOWN, true, "[t][to][green][green]"},
                {"ComboBox", CBS_DROPDOWN | CBS_AUTOHSCROLL, true, "[t][to][green][green]"},
                {"ComboBox", CBS_DROPDOWNLIST, false, "[green]"},
                {"ComboBox", CBS_SIMPLE, false, "[t][to][green][green]"},
                {"ComboBoxEx32", CBS_DROPDOWNLIST, false, "[green]"}};
    for (const auto &row : rows) {
        const HWND box = dialog.Add(row.window_class, "", {0, 0, 100, 120}, row.style, 7);
        for (const char *line : {"red", "green"}) Tell(box, CB_ADDSTRING, 0, line);
        CBoundComboBoxControl *const control = cache.GetComboboxControl();
        control->AttachTo(box);
        control->Install_Client_Interface(&client);
        for (const auto &[value, chosen] : {std::pair{"green", 1}, {"blue", row.takes_new_ones ? 2 : -1}}) {
            client.value = value;
            control->Binding_Changed();
            EXPECT_EQ(Tell(box, CB_GETCURSEL), chosen) << row.window_class << row.style;
        }
        EXPECT_EQ(Lines_Of(box), row.takes_new_ones ? "red green blue" : "red green");
        EXPECT_EQ(client.room, 255);
        client.value = std::string(1000, 'v');
        control->Binding_Changed();
        Work_Off_Queue();
        EXPECT_EQ(client.Written(), "") << "what is shown is not written back";
        control->Binding_Invalid(); // which is not asked
        EnableWindow(box, TRUE);
        SetFocus(box);
        Tell(box, CB_SETEDITSEL, 0, reinterpret_cast<void *>(0xFFFF0000));
        const bool has_edit = (row.style & 3) != CBS_DROPDOWNLIST;
        if (has_edit) Type_Text("to");
        Choose_Line(box, 1);
        EXPECT_EQ(client.Written(), row.written) << row.window_class << row.style;
        SetWindowTextA(box, std::string(65536, 'x').c_str());
        Work_Off_Queue();
        const std::string cut = "[" + std::string(254, 'x') + "]";
        EXPECT_EQ(client.Written(), has_edit ? cut + cut : "[green]") << "at once, and as the edit tells";
        control->Detach();
        control->HandleSelectionChange();
        Tell(box, 1147);
        EXPECT_EQ(client.Written(), "");
        DestroyWindow(box);
    }
}

class BoundListBox : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        window = dialog.Add("ListBox", "", {0, 0, 100, 100}, 0);
        for (const char *line : {"a", "b", "c"}) Tell(window, LB_ADDSTRING, 0, line);
        list_box->AttachTo(window);
        for (int i = 0; i < 3; ++i) {
            entries[i] = new CBoundListEntry(list_box, i);
            entries[i]->Install_Client_Interface(&clients[i]);
            list_box->AddBoundListEntry(entries[i]);
        }
        list_box->AddBoundListEntry(nullptr);
    }
    void Show(int entry, const std::string &value) {
        clients[entry].value = value;
        entries[entry]->Binding_Changed();
    }
    std::string Written() { return clients[0].Written() + clients[1].Written() + clients[2].Written(); }

    HWND window = nullptr;
    CBoundListboxControl *list_box = cache.GetListboxControl();
    CBoundListEntry *entries[3];
    BindingClient clients[3];
};

TEST_F(BoundListBox, Shows_Each_Value_In_Its_Line) {
    Show(1, "B");
    EXPECT_EQ(Lines_Of(window), "a B c");
    Show(0, "");
    EXPECT_EQ(Lines_Of(window), "B c") << "the line has gone, and the numbers stay";
    Show(2, "C");
    EXPECT_EQ(Lines_Of(window), "B c C");
    Show(1, std::string(1000, 'x'));
    entries[0]->Binding_Invalid();
    Show(0, "invalid");
    entries[0]->Write_String("invalid");
    for (const int line : {-1, 9}) list_box->SetEntry(line, "lost");
    list_box->SetEntry(0, nullptr);
    EXPECT_EQ(Lines_Of(window) + Written(), "B " + std::string(255, 'x') + " C");
    list_box->Detach();
    static WNDPROC native;
    const WNDPROC full = [](HWND of, UINT message, WPARAM wparam, LPARAM lparam) {
        return message == LB_INSERTSTRING ? LB_ERRSPACE
                                          : CallWindowProcA(native, of, message, wparam, lparam);
    };
    native = reinterpret_cast<WNDPROC>(SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(full)));
    list_box->AttachTo(window);
    Show(1, "no memory for it");
    EXPECT_EQ(Line_Of(window, 2), "C") << "the line behind stays";
    RECT changed;
    EXPECT_TRUE(Invalid_Rectangle(window, &changed, false)) << "it is drawn again";
}

TEST_F(BoundListBox, Writes_Every_Line_When_Others_Change_One) {
    Tell(window, LB_INSERTSTRING, 0, "new");
    EXPECT_EQ(Written(), "[new][a][b]");
    for (int i = 0; i < 3; ++i) Tell(window, LB_DELETESTRING);
    EXPECT_EQ(Written(), "[a][b][c][b][c][][c][][]");
    const std::string book(65536, 'x');
    Tell(window, LB_ADDSTRING, 0, book.c_str());
    Tell(window, LB_ADDSTRING, 0, "e");
    EXPECT_EQ(clients[1].value, book) << "whole";
    Written();
    {
        const FailingMemory failing(1);
        list_box->ListChanged();
    }
    EXPECT_EQ(Written(), "[c][e]") << "without memory one is left out";
    char text[8] = "before";
    EXPECT_FALSE(list_box->GetEntry(9, text));
    EXPECT_STREQ(text, "");
    EXPECT_TRUE(list_box->GetEntry(0, text));
    EXPECT_STREQ(text, "c");
    clients[0].on_write = [&] { list_box->Detach(); };
    Tell(window, LB_ADDSTRING, 0, "d");
    EXPECT_EQ(Written(), "[c]") << "nothing without the window";
}

} // namespace
