// The bound checkbox, radio group, combo box and list box.

#include <tests/dialogs/binding_client.h>

namespace {

bool Is_Checked(HWND button) {
    return Tell(button, BM_GETCHECK) != BST_UNCHECKED;
}

class BoundCheckbox : public BindingTest {};

TEST_F(BoundCheckbox, Is_Checked_By_One_Word_And_Written_By_Two) {
    const HWND box = dialog.Add("Button", "", {0, 0, 90, 20}, BS_AUTO3STATE);
    BindingClient client;
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
            EXPECT_EQ(Is_Checked(box), (client.value == "TRUE") != opposite) << value;
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

class BoundRadioGroup : public BindingTest {
  protected:
    static CDSList *Numbers(std::initializer_list<int> numbers) {
        auto *const list = new CDSList;
        for (const int number : numbers) list->Add(number, 0);
        return list;
    }
    static CDSList *Texts(std::initializer_list<const char *> texts) {
        auto *const list = new CDSList;
        for (const char *text : texts) list->AddCString(const_cast<char *>(text), 0);
        return list;
    }
    std::string Checked() const {
        std::string checked;
        for (const HWND button : buttons) checked += Is_Checked(button) ? '1' : '0';
        return checked;
    }

    BindingClient client;
    std::vector<HWND> buttons;
};

TEST_F(BoundRadioGroup, Checks_The_Button_Of_The_Value_And_Writes_That_Of_The_Button) {
    for (int id = 0; id < 3; ++id)
        buttons.push_back(dialog.Add("Button", "", {0, 30L * id, 90, 30L * id + 20},
                                     BS_AUTORADIOBUTTON | (id == 0 ? WS_GROUP : 0), id));
    CBoundRadioGroupControl *const group =
        cache.GetRadioGroupControl(Numbers({0, 99, 1, 2}), Texts({"zero", "gone", "one"}));
    EXPECT_FALSE(group->AttachTo(buttons[0]));
    group->Setup_Bound_Notifiers(dialog);
    group->Binding_Changed();
    Tell(buttons[2], BM_SETCHECK, 1); // has no value
    Tell(buttons[0], BM_SETCHECK, 1); // there is no client
    group->Install_Client_Interface(&client);
    for (const auto &[value, checked] :
         {std::pair{"one", "010"}, {"ONE", "000"}, {"zero", "100"}, {"gone", "000"}}) {
        client.value = value;
        group->Binding_Changed();
        EXPECT_EQ(Checked(), checked) << value;
    }
    EXPECT_EQ(client.room, 256);
    EXPECT_TRUE(Click_Window(buttons[1]));
    EXPECT_EQ(Checked() + client.Written(), "010[one]");
    EXPECT_TRUE(Click_Window(buttons[0]));
    EXPECT_EQ(client.Written(), "[zero]") << "and nothing for the one that went out";
    group->Clicked(nullptr);
    group->Clicked(dialog);
    group->Binding_Invalid();
    EXPECT_TRUE(IsWindowEnabled(buttons[0]));
    client.value = "one";
    group->Binding_Changed();
    EXPECT_EQ(Checked() + client.Written(), "100");
    Tell(buttons[1], BM_SETCHECK, 1);
    EXPECT_EQ(client.Written(), "[one]") << "clicks do not ask whether the value is valid";
    cache.ReturnRadioGroupControl(group);
}

TEST_F(BoundRadioGroup, Keeps_Buttons_And_Values_In_Step_Without_Memory) {
    for (int id = 0; id < 3; ++id)
        buttons.push_back(dialog.Add("Button", "", {0, 0, 9, 9}, BS_RADIOBUTTON, id));
    CBoundRadioGroupControl *const group =
        cache.GetRadioGroupControl(Numbers({0, 1, 2}), Texts({"0", "1", "2"}));
    group->Install_Client_Interface(&client);
    for (long nth = 1; nth <= 6; ++nth) { // a notifier and its record for each
        {
            const FailingMemory failing(nth);
            group->Setup_Bound_Notifiers(dialog);
        }
        const long hit = (nth - 1) / 2;
        for (const HWND button : buttons) Tell(button, BM_SETCHECK, 1);
        EXPECT_EQ(client.Written(), hit == 0 ? "[1][2]" : hit == 1 ? "[0][2]" : "[0][1]");
    }
    cache.ReturnRadioGroupControl(group);
    cache.ReturnRadioGroupControl(cache.GetRadioGroupControl(nullptr, nullptr));
}

class BoundComboBox : public BindingTest {
  protected:
    CBoundComboBoxControl *Bind(const char *window_class, DWORD style) {
        box = dialog.Add(window_class, "", {0, 0, 100, 120}, style, 7);
        for (const char *line : {"red", "green"}) {
            COMBOBOXEXITEM item = {CBEIF_TEXT, -1, const_cast<char *>(line), 0, 0, 0, 0, 0, 0};
            if (std::string(window_class) == "ComboBoxEx32")
                Tell(box, CBEM_INSERTITEM, 0, reinterpret_cast<LPARAM>(&item));
            else
                Tell(box, CB_ADDSTRING, 0, As_Parameter(line));
        }
        CBoundComboBoxControl *const control = cache.GetComboboxControl();
        control->AttachTo(box);
        control->Install_Client_Interface(&client);
        return control;
    }

    BindingClient client;
    HWND box = nullptr;
};

TEST_F(BoundComboBox, Shows_Values_And_Takes_New_Ones_Where_They_Can_Be_Typed) {
    const struct {
        const char *window_class;
        DWORD style;
        const char *lines_then;
        LRESULT chosen_then;
    } rows[] = {{"ComboBox", CBS_DROPDOWN, "red green blue", 2},
                {"ComboBox", CBS_DROPDOWN | CBS_AUTOHSCROLL, "red green blue", 2},
                {"ComboBox", CBS_DROPDOWNLIST, "red green", -1},
                {"ComboBox", CBS_SIMPLE, "red green", -1},
                {"ComboBoxEx32", CBS_DROPDOWN, "red green blue", 2},
                {"ComboBoxEx32", CBS_DROPDOWNLIST, "red green", -1}};
    for (const auto &row : rows) {
        CBoundComboBoxControl *const control = Bind(row.window_class, row.style);
        client.Written();
        for (const auto &[value, chosen] :
             {std::pair<std::string, LRESULT>{"green", 1}, {"blue", row.chosen_then}}) {
            client.value = value;
            control->Binding_Changed();
            EXPECT_EQ(Tell(box, CB_GETCURSEL), chosen) << row.window_class << row.style;
        }
        EXPECT_EQ(Lines_Of(box), row.lines_then);
        EXPECT_EQ(client.room, 255);
        client.value = std::string(1000, 'x');
        control->Binding_Changed();
        EXPECT_EQ(client.value.size(), 1000u);
        Work_Off_Queue();
        EXPECT_EQ(client.Written(), "") << "what is shown is not written back";
        DestroyWindow(box);
    }
}

TEST_F(BoundComboBox, Writes_What_Is_Typed_Or_Chosen_By_And_By) {
    Bind("ComboBox", CBS_DROPDOWN);
    SetFocus(box);
    EXPECT_TRUE(Type_Text("ab"));
    EXPECT_EQ(client.Written(), "[a][ab]");
    EXPECT_TRUE(Choose_Line(box, 1));
    EXPECT_TRUE(client.Written().ends_with("[green]"));
    SetWindowTextA(box, std::string(65536, 'x').c_str());
    Work_Off_Queue();
    EXPECT_TRUE(client.Written().starts_with("[" + std::string(254, 'x') + "]"));
    Tell(box, CB_SETCURSEL, 0);
    Work_Off_Queue();
    EXPECT_TRUE(client.Written().ends_with("[red]"));
    MoveWindow(box, 1, 1, 90, 120, TRUE);
    EXPECT_TRUE(client.Written().starts_with("[red]"));

    CBoundComboBoxControl *const control = Bind("ComboBoxEx32", CBS_DROPDOWN);
    Tell(box, CB_SETCURSEL, 1);
    control->Binding_Invalid();
    client.Written();
    control->HandleSelectionChange();
    EXPECT_EQ(client.Written(), "[green]");
    control->Detach();
    control->HandleSelectionChange();
    Tell(box, 1147);
    EXPECT_EQ(client.Written(), "");
}

class BoundListBox : public BindingTest {
  protected:
    void SetUp() override {
        BindingTest::SetUp();
        window = dialog.Add("ListBox", "", {0, 0, 100, 100}, 0);
        for (const char *line : {"a", "b", "c"}) Tell(window, LB_ADDSTRING, 0, As_Parameter(line));
        list_box->AttachTo(window);
        for (int i = 0; i < 3; ++i) {
            entries.push_back(new CBoundListEntry(list_box, i));
            entries[static_cast<std::size_t>(i)]->Install_Client_Interface(&clients[i]);
            list_box->AddBoundListEntry(entries.back());
        }
        list_box->AddBoundListEntry(nullptr);
    }
    std::string Written() { return clients[0].Written() + clients[1].Written() + clients[2].Written(); }
    void Show(int entry, const std::string &value) {
        clients[entry].value = value;
        entries[static_cast<std::size_t>(entry)]->Binding_Changed();
    }

    HWND window = nullptr;
    CBoundListboxControl *list_box = cache.GetListboxControl();
    std::vector<CBoundListEntry *> entries;
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
    EXPECT_EQ(Line_Of(window, 1), std::string(255, 'x'));
    entries[1]->Binding_Invalid();
    Show(1, "invalid");
    entries[1]->Write_String("invalid");
    list_box->SetEntry(-1, "lost");
    list_box->SetEntry(9, "lost");
    list_box->SetEntry(0, nullptr);
    EXPECT_EQ(Lines_Of(window), "B " + std::string(255, 'x') + " C");
    EXPECT_EQ(Written(), "");
    RECT changed;
    EXPECT_TRUE(Invalid_Rectangle(window, &changed, false)) << "it is drawn again";
}

TEST_F(BoundListBox, Writes_Every_Line_When_Others_Change_One) {
    Tell(window, LB_INSERTSTRING, 0, As_Parameter("new"));
    EXPECT_EQ(Written(), "[new][a][b]");
    for (int i = 0; i < 3; ++i) Tell(window, LB_DELETESTRING);
    EXPECT_EQ(clients[0].Written(), "[a][b][c]");
    EXPECT_EQ(clients[1].Written(), "[b][c][]");
    EXPECT_EQ(clients[2].Written(), "[c][][]");
}

TEST_F(BoundListBox, Passes_Long_Lines_Whole_And_Stops_When_It_Loses_The_Window) {
    const std::string book(65536, 'x');
    Tell(window, LB_INSERTSTRING, 0, As_Parameter(book.c_str()));
    EXPECT_EQ(clients[0].value, book);
    Written();
    {
        const FailingMemory failing(1);
        list_box->ListChanged();
    }
    EXPECT_EQ(Written(), "[a][b]") << "without memory one is left out";
    char text[300] = "before";
    EXPECT_FALSE(list_box->GetEntry(9, text));
    EXPECT_STREQ(text, "");
    EXPECT_TRUE(list_box->GetEntry(2, text));
    EXPECT_STREQ(text, "b");
    clients[1].on_write = [&] { list_box->Detach(); };
    Tell(window, LB_ADDSTRING, 0, As_Parameter("d"));
    EXPECT_EQ(clients[1].Written() + clients[2].Written(), "[a]");
    list_box->ListChanged();
    EXPECT_FALSE(list_box->GetEntry(0, text));
    EXPECT_EQ(Written().find("[]"), std::string::npos);
}

} // namespace
