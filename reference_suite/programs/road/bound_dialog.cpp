#include <reference_suite/programs/road/bound_dialog.h>

#include <reference_suite/programs/road/connect_dialog.h>
#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/pictures.h>

#include <kelmara/kelmara.h>

#include <platform/controls.h>
#include <platform/errors.h>
#include <platform/machine.h>

#include <algorithm>
#include <cstring>

namespace {

/// A value that a control is bound to: what a settings file or a component would keep.
class Value final : public IBindingClientInterface {
  public:
    Value(const char *name, const char *initial) : text(initial), name_(name) {}

    long QueryInterface(GUID const &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    void Read_Value(long *size, char *buffer) override {
        const std::size_t room = static_cast<std::size_t>(std::max(*size, 1L)) - 1;
        const std::size_t length = std::min(text.size(), room);
        std::memcpy(buffer, text.c_str(), length);
        buffer[length] = 0;
    }
    void Reserved() override {}
    void Write_Value(char *written) override { text = written; }
    long Get_Value_Size() override { return Most_Characters + 1; }
    bool Write_On_Key() override { return true; }

    /// Tells the value, which must be this.
    void Check(const char *expected, const char *what) const {
        Tell("%s: %s = \"%s\"", what, name_, text.c_str());
        Require(text == expected, (std::string("the value of ") + name_ + " is what was done").c_str());
    }

    std::string text;

  private:
    static constexpr long Most_Characters = 32;

    const char *const name_;
};

struct Values {
    Value user{"user", "Ann"}, account{"account", "Home"}, remember{"remember", "FALSE"};
    Value local_call{"local_call", "TRUE"}, device{"device", "modem"}, dial_from{"dial_from", "Berlin"};
    Value first_number{"number 1", "030 5550100"}, second_number{"number 2", "030 5550199"};
};

/// The dialog's controls, bound to the values.
class Bindings {
  public:
    Bindings(const connect::Dialog &dialog, Values &values) {
        Add_Lines(dialog.Item(connect::Account), {"Home", "Office"});
        Add_Lines(dialog.Item(connect::Dial_From), {"Berlin", "Hamburg"});
        Bind(cache_.GetTextControl(), dialog.Item(connect::User), values.user);
        Bind(cache_.GetComboboxControl(), dialog.Item(connect::Account), values.account);
        Bind(cache_.GetCheckboxControl(), dialog.Item(connect::Remember), values.remember);
        Bind(cache_.GetComboboxControl(), dialog.Item(connect::Dial_From), values.dial_from);
        CBoundCheckboxControl *const area_code = cache_.GetCheckboxControl();
        if (area_code) area_code->OppositeBind();
        Bind(area_code, dialog.Item(connect::Area_Code), values.local_call);
        Bind_Radio_Group(dialog, values.device);
        Bind_List_Box(dialog.Item(connect::Numbers), {&values.first_number, &values.second_number});
    }
    ~Bindings() { cache_.ReturnRadioGroupControl(group_); }
    Bindings(const Bindings &) = delete;
    Bindings &operator=(const Bindings &) = delete;

  private:
    static void Add_Lines(HWND list, std::initializer_list<const char *> lines) {
        for (const char *line : lines) SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
    }
    static void Bind(CBoundControlNotifier *control, HWND window, Value &value) {
        Require(control && control->AttachTo(window), "a control can be bound");
        control->Install_Client_Interface(&value);
        control->Binding_Changed();
    }
    void Bind_Radio_Group(HWND dialog, Value &value) {
        auto *const ids = new CDSList, *const texts = new CDSList;
        for (const int id : {connect::Modem, connect::Isdn, connect::Dsl, connect::Network}) ids->Add(id, 0);
        for (const char *text : {"modem", "isdn", "dsl", "lan"})
            texts->AddCString(const_cast<char *>(text), 0);
        group_ = cache_.GetRadioGroupControl(ids, texts);
        Require(group_ != nullptr, "radio buttons can be bound");
        group_->Setup_Bound_Notifiers(dialog);
        group_->Install_Client_Interface(&value);
        group_->Binding_Changed();
    }
    void Bind_List_Box(HWND window, std::initializer_list<Value *> values) {
        CBoundListboxControl *const list_box = cache_.GetListboxControl();
        Require(list_box && list_box->AttachTo(window), "a list box can be bound");
        int line = 0;
        for (Value *value : values) {
            auto *const entry = new CBoundListEntry(list_box, line++);
            list_box->AddBoundListEntry(entry);
            entry->Install_Client_Interface(value);
            entry->Binding_Changed();
        }
    }

    CBoundControlCache cache_; // goes after the group
    CBoundRadioGroupControl *group_ = nullptr;
};

LRESULT Ask(HWND window, UINT message) {
    return SendMessageA(window, message, 0, 0);
}

void Check_What_Is_Shown(const connect::Dialog &dialog) {
    using namespace connect;
    Require(dialog.Text_Of(User) == "Ann" && dialog.Text_Of(Dial_From) == "Berlin" &&
                Ask(dialog.Item(Account), CB_GETCURSEL) == 0 && Ask(dialog.Item(Numbers), LB_GETCOUNT) == 2,
            "texts and lists show their values");
    Require(Ask(dialog.Item(Modem), BM_GETCHECK) && !Ask(dialog.Item(Remember), BM_GETCHECK) &&
                !Ask(dialog.Item(Area_Code), BM_GETCHECK),
            "buttons show their values, one of them the opposite");
}

void Fill_In(const connect::Dialog &dialog, const Values &values) {
    using namespace connect;
    Require(Click_Window(dialog.Item(User)) && Type_Text(" Example"), "a user can type into a field");
    values.user.Check("Ann Example", "Typed into the field");
    Require(Choose_Line(dialog.Item(Account), 1), "a user can choose an account");
    values.account.Check("Office", "Chosen from the extended combo box");
    Require(Click_Window(dialog.Item(Remember)), "a user can click a check box");
    values.remember.Check("TRUE", "Clicked");
    Require(Click_Window(dialog.Item(Area_Code)), "and the opposite one");
    values.local_call.Check("FALSE", "Clicked, where the value is the opposite");
    Require(Click_Window(dialog.Item(Dsl)), "a user can click a radio button");
    values.device.Check("dsl", "Clicked in a group");
    Require(Choose_Line(dialog.Item(Dial_From), 1), "a user can choose where to dial from");
    values.dial_from.Check("Hamburg", "Chosen from the combo box");
    Require(Click_Window(dialog.Item(Dial_From)) && Press_Key(VK_END) && Type_Text(" 2"),
            "and type something that is not in its list");
    values.dial_from.Check("Hamburg 2", "Typed into it");
}

void Change_The_List(HWND numbers, const Values &values) {
    Require(Choose_Line(numbers, 1), "a user can choose a line of a list box");
    const LRESULT chosen = Ask(numbers, LB_GETCURSEL);
    Require(chosen == 1, "that line is chosen then");
    SendMessageA(numbers, LB_DELETESTRING, static_cast<WPARAM>(chosen), 0);
    SendMessageA(numbers, LB_INSERTSTRING, 0, reinterpret_cast<LPARAM>("040 5550123"));
    values.first_number.Check("040 5550123", "The second number deleted, and one put before the first");
    values.second_number.Check("030 5550100", "which is the second then");
}

long Gap_Of_Buttons(const connect::Dialog &dialog) {
    return dialog.Place_Of(IDCANCEL).left - dialog.Place_Of(IDOK).right;
}

} // namespace

void Fill_In_A_Dialog() {
    Begin_Chapter("Controls that are bound to values");
    const unsigned long windows = Window_Count(), objects = Gdi_Object_Count();
    Values values;
    {
        connect::Dialog dialog;
        const Bindings bindings(dialog, values);
        dialog.Speak("english");
        Check_What_Is_Shown(dialog);
        Fill_In(dialog, values);
        Change_The_List(dialog.Item(connect::Numbers), values);
        Tell("and the dialog after that:");
        Take_Picture(dialog, "bound");
    }
    Require(Window_Count() == windows && Gdi_Object_Count() == objects, "nothing is left of the dialog");
}

void Refit_A_Dialog() {
    Begin_Chapter("A layout that fits itself to texts and sizes");
    const unsigned long windows = Window_Count(), objects = Gdi_Object_Count();
    Values values;
    {
        connect::Dialog dialog;
        const Bindings bindings(dialog, values);
        const long gap = Gap_Of_Buttons(dialog);
        const auto show = [&](const char *what, const char *picture) {
            Tell("%s", what);
            Take_Picture(dialog, picture);
            dialog.Check_Layout();
            Require(Gap_Of_Buttons(dialog) == gap, "the buttons keep their distance");
        };
        dialog.Speak("english");
        show("The dialog in English,", "layout_english");
        const RECT field = dialog.Place_Of(connect::User), list = dialog.Place_Of(connect::Numbers);
        dialog.Speak("german");
        show("in German, whose labels are longer,", "layout_german");
        Require(dialog.Place_Of(connect::User).left > field.left, "a field makes room for a longer label");
        dialog.Resize_To(520, 360);
        show("and in a larger window.", "layout_larger");
        const RECT larger = dialog.Place_Of(connect::Numbers);
        Require(larger.right > list.right && larger.bottom > list.bottom, "the list grows with the window");
        Require(Choose_Line(dialog.Item(connect::Account), 1), "what has moved can be used as before");
        values.account.Check("Office", "Chosen in the moved combo box");
    }
    Require(Window_Count() == windows && Gdi_Object_Count() == objects, "nothing is left of the dialog");
}
