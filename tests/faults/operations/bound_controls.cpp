#include <tests/faults/operations/operation.h>

#include <kelmara/kelmara.h>
#include <tests/support/plain_dialog.h>

#include <cstring>

namespace {

/// A value in memory of its own.
struct Client final : IBindingClientInterface {
    explicit Client(const char *initial) { std::strcpy(value, initial); }
    long QueryInterface(GUID const &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    void Read_Value(long *size, char *buffer) override {
        std::snprintf(buffer, static_cast<std::size_t>(*size), "%s", value);
    }
    void Reserved() override {}
    void Write_Value(char *text) override { std::snprintf(value, sizeof value, "%s", text); }
    long Get_Value_Size() override { return sizeof value; }
    bool Write_On_Key() override { return true; }
    char value[700];
};

/// A dialog with a window for the control, and a control of the cache's.
struct Bound {
    explicit Bound(const char *control_class, DWORD style = 0, const char *value = "one")
        : client(value), window(dialog.Add("before", control_class, 0, style)) {}
    std::string State() const {
        return std::to_string(GetWindowLongA(window, GWL_WNDPROC) == procedure) + "|" + Title_Of(window) +
               "|" + client.value + "|";
    }
    Client client;
    PlainDialog dialog;
    HWND window;
    LONG procedure = GetWindowLongA(window, GWL_WNDPROC);
    CBoundControlCache cache;
};

struct Text : Bound {
    Text() : Bound("Edit", 0, Long_Text.c_str()) {}
    CBoundTextControl *control = cache.GetTextControl();
};
struct Checkbox : Bound {
    Checkbox() : Bound("Button", BS_AUTOCHECKBOX, "TRUE") {}
    CBoundCheckboxControl *control = cache.GetCheckboxControl();
};
struct Combobox : Bound {
    Combobox() : Bound("ComboBox", CBS_DROPDOWN) {}
    CBoundComboBoxControl *control = cache.GetComboboxControl();
};

template <class Kind>
struct Attached : Kind {
    Attached() {
        this->control->Install_Client_Interface(&this->client);
        this->control->AttachTo(this->window);
    }
};

/// With the same in the window as the client has.
template <class Kind>
struct Showing : Attached<Kind> {
    Showing() { this->control->Binding_Changed(); }
};

struct Unbound : Bound {
    Unbound() : Bound("ListBox") {}
    CBoundListboxControl *control = cache.GetListboxControl();
};

struct Listbox : Bound {
    Listbox() : Bound("ListBox", 0, Long_Text.c_str()) {
        control->AttachTo(window);
        auto *const entry = new CBoundListEntry(control, 0);
        entry->Install_Client_Interface(&client);
        control->AddBoundListEntry(entry);
        SendMessageA(window, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Long_Text.c_str()));
    }
    ~Listbox() {
        if (added) delete added;
    }
    std::string State() const {
        std::string lines;
        for (WPARAM line = 0; SendMessageA(window, LB_GETTEXTLEN, line, 0) >= 0; ++line) {
            std::string text(700, 0);
            text.resize(static_cast<std::size_t>(
                SendMessageA(window, LB_GETTEXT, line, reinterpret_cast<LPARAM>(text.data()))));
            lines += text + "|";
        }
        return lines + client.value;
    }
    CBoundListboxControl *control = cache.GetListboxControl();
    CBoundListEntry *added = new CBoundListEntry(control, 1); // until the box has it
};

/// The lists of a group, and the group that has taken them over.
struct Radio : Bound {
    Radio() : Bound("Button", BS_AUTORADIOBUTTON) {
        SetWindowLongA(window, GWL_ID, 5);
        ids->Add(5, 0);
        values->Add(one, 0);
    }
    ~Radio() {
        cache.ReturnRadioGroupControl(group);
        if (group) return;
        Delete_List(ids);
        Delete_List(values);
    }
    bool Make() { return (group = cache.GetRadioGroupControl(ids, values)) != nullptr; }
    std::string State() const {
        return Bound::State() + std::to_string(SendMessageA(window, BM_GETCHECK, 0, 0));
    }
    char one[4] = "one";
    CDSList *ids = new CDSList, *values = new CDSList;
    CBoundRadioGroupControl *group = nullptr;
};
struct Group : Radio {
    Group() {
        Make();
        group->Install_Client_Interface(&client);
    }
};
struct SetUp : Group {
    SetUp() { group->Setup_Bound_Notifiers(dialog); }
};

struct Cached {
    CBoundControlCache cache;
};

template <auto Get, auto Return>
Operation Getting(const char *name) {
    return Row<Cached>(name, 1, {Nothing}, [](auto &of) {
        auto *const control = (of.cache.*Get)();
        (of.cache.*Return)(control);
        return control != nullptr;
    });
}

/// Attaching, and a value shown, of one kind.
template <class Kind>
void Add_Kind(Operations &rows, const char *attach, const char *show, const char *write, UINT message,
              const Leaves &shown = Partly_Untold) {
    rows.push_back(
        Row<Kind>(attach, 1, {Nothing}, Either, [](auto &of) { return of.control->AttachTo(of.window); }));
    rows.push_back(Row<Attached<Kind>>(show, 0, {}, shown, [](auto &of) { of.control->Binding_Changed(); }));
    rows.push_back(Row<Showing<Kind>>(write, 0, {}, Partly_Untold, [=](Showing<Kind> &of) {
        SendMessageA(of.window, message, 1, reinterpret_cast<LPARAM>(Long_Text.c_str() + 1));
    }));
}

} // namespace

Operations Bound_Control_Operations() {
    using Cache = CBoundControlCache;
    Operations rows = {
        Getting<&Cache::GetTextControl, &Cache::ReturnTextControl>("GetTextControl"),
        Getting<&Cache::GetCheckboxControl, &Cache::ReturnCheckboxControl>("GetCheckboxControl"),
        Getting<&Cache::GetListboxControl, &Cache::ReturnListboxControl>("GetListboxControl"),
        Getting<&Cache::GetComboboxControl, &Cache::ReturnComboboxControl>("GetComboboxControl"),
        Row<Radio>("GetRadioGroupControl", 1, {Nothing}, [](auto &of) { return of.Make(); }),
        // "A button ... that there is no memory for, stays unbound"
        Row<Group>("Setup_Bound_Notifiers", 0, {}, Either,
                   [](auto &of) { of.group->Setup_Bound_Notifiers(of.dialog); }),
        Row<SetUp>("Binding_Changed of a group", 0, {}, Partly_Untold,
                   [](auto &of) { of.group->Binding_Changed(); }),
        Row<SetUp>("Clicked", 0, {}, Either, [](auto &of) { of.group->Clicked(of.window); }),
        Row<Unbound>("AttachTo of a list box", 1, {}, Either,
                     [](auto &of) { return of.control->AttachTo(of.window); }),
        // "the entry is then the caller's"
        Row<Listbox>("AddBoundListEntry", 0, {Minus_One, Thrown},
                     [](auto &of) {
                         of.control->AddBoundListEntry(of.added);
                         of.added = nullptr;
                     }),
        // "The old line stays where there is no memory for the new one"
        Row<Listbox>("SetEntry", 0, {}, Either, [](auto &of) { of.control->SetEntry(0, "new"); }),
        Row<Listbox>("SetEntry behind the last", 0, {}, Either,
                     [](auto &of) { of.control->SetEntry(1, "new"); }),
        Row<Listbox>("ListChanged", 0, {}, Either, [](auto &of) { of.control->ListChanged(); }),
    };
    Add_Kind<Text>(rows, "AttachTo of a text", "Binding_Changed of a text", "WM_SETTEXT", WM_SETTEXT);
    Add_Kind<Checkbox>(rows, "AttachTo of a check box", "Binding_Changed of a check box", "BM_SETCHECK",
                       BM_SETCHECK);
    Add_Kind<Combobox>(rows, "AttachTo of a combo box", "Binding_Changed of a combo box",
                       "text of a combo box", WM_SETTEXT,
                       Or(Partly_Untold, {""})); // no line for the value: none is chosen
    return rows;
}
