// What all kinds of bound controls have in common.

#include <tests/dialogs/binding_client.h>

namespace {

CDSList *List_Of(std::initializer_list<long> numbers) {
    auto *const list = new CDSList;
    for (const long number : numbers) list->Add(static_cast<int>(number), 0);
    return list;
}

CDSList *List_Of(std::initializer_list<const char *> texts) {
    auto *const list = new CDSList;
    for (const char *text : texts) list->AddCString(const_cast<char *>(text), 0);
    return list;
}

/// A control of one kind, in the verbs that all have.
struct Bound {
    std::function<void(HWND)> attach;
    std::function<void()> detach, change, give_back;
};

struct Kind {
    const char *window_class;
    DWORD style;
    Bound (*make)(CBoundControlCache &cache, BindingClient &client);
    void (*write)(HWND window); // does what the control writes at
};

template <class Control>
Bound As_Bound(Control *control, std::function<void()> change, std::function<void()> give_back) {
    return {[control](HWND window) { control->AttachTo(window); }, [control] { control->Detach(); },
            std::move(change), std::move(give_back)};
}

template <class Control>
Bound Notifier(CBoundControlCache &cache, BindingClient &client, Control *control,
               void (CBoundControlCache::*give_back)(Control *)) {
    control->Install_Client_Interface(&client);
    return As_Bound(
        control, [control] { control->Binding_Changed(); },
        [&cache, control, give_back] { (cache.*give_back)(control); });
}

constexpr int Button_Id = 1;

const Kind Kinds[] = {
    {"Edit", 0,
     [](CBoundControlCache &cache, BindingClient &client) {
         return Notifier(cache, client, cache.GetTextControl(), &CBoundControlCache::ReturnTextControl);
     },
     [](HWND window) { Tell(window, WM_KEYUP, 'A'); }},
    {"Button", BS_AUTOCHECKBOX,
     [](CBoundControlCache &cache, BindingClient &client) {
         return Notifier(cache, client, cache.GetCheckboxControl(),
                         &CBoundControlCache::ReturnCheckboxControl);
     },
     [](HWND window) { Tell(window, BM_CLICK); }},
    {"ComboBox", CBS_DROPDOWN,
     [](CBoundControlCache &cache, BindingClient &client) {
         return Notifier(cache, client, cache.GetComboboxControl(),
                         &CBoundControlCache::ReturnComboboxControl);
     },
     [](HWND window) { SetWindowTextA(window, "typed"); }},
    {"ListBox", 0,
     [](CBoundControlCache &cache, BindingClient &client) {
         CBoundListboxControl *const list_box = cache.GetListboxControl();
         auto *const entry = new CBoundListEntry(list_box, 0);
         entry->Install_Client_Interface(&client);
         list_box->AddBoundListEntry(entry);
         return As_Bound(
             list_box, [entry] { entry->Binding_Changed(); },
             [&cache, list_box] { cache.ReturnListboxControl(list_box); });
     },
     [](HWND window) { Tell(window, LB_ADDSTRING, 0, As_Parameter("line")); }},
    {"Button", BS_AUTORADIOBUTTON,
     [](CBoundControlCache &cache, BindingClient &client) {
         CBoundRadioGroupControl *const group =
             cache.GetRadioGroupControl(List_Of({Button_Id}), List_Of({"radio"}));
         group->Install_Client_Interface(&client);
         Bound bound = As_Bound(
             group, [group] { group->Binding_Changed(); },
             [&cache, group] { cache.ReturnRadioGroupControl(group); });
         bound.attach = [group](HWND window) { group->Setup_Bound_Notifiers(GetParent(window)); };
         return bound;
     },
     [](HWND window) { Tell(window, BM_SETCHECK, 1); }},
};

class BoundControls : public BindingTest {
  protected:
    HWND Window_For(const Kind &kind) {
        return dialog.Add(kind.window_class, "text", {0, 0, 100, 80}, kind.style, Button_Id);
    }
    static LONG Procedure_Of(HWND window) { return GetWindowLongA(window, GWL_WNDPROC); }
    static bool Is_Radio(const Kind &kind) { return kind.style == BS_AUTORADIOBUTTON; }
};

TEST_F(BoundControls, Give_Their_Windows_Back_In_Every_Order_Of_Ends) {
    for (const Kind &kind : Kinds) {
        for (int order = 0; order < 5; ++order) {
            const NoLeak none_here;
            BindingClient client("value");
            CBoundControlCache own_cache;
            auto *const dying_cache = new CBoundControlCache;
            Bound bound = kind.make(order == 4 && !Is_Radio(kind) ? *dying_cache : own_cache, client);
            HWND window = Window_For(kind);
            const LONG native = Procedure_Of(window);
            bound.change();
            bound.attach(window);
            bound.attach(window);
            EXPECT_NE(Procedure_Of(window), native);
            bound.change();
            kind.write(window);
            EXPECT_NE(client.Written(), "") << kind.window_class;
            if (order == 1) DestroyWindow(window);
            if (order == 2) bound.detach();
            if (order == 3) {
                DestroyWindow(window);
                window = Window_For(kind);
                bound.attach(window);
            }
            delete dying_cache;
            if (order != 4 || Is_Radio(kind)) bound.give_back();
            EXPECT_EQ(Procedure_Of(window), order != 1 ? native : 0) << kind.window_class << order;
            EXPECT_EQ(GetWindowUserData(window, 0), -1) << "its record has gone";
            client.Written(); // a combo box whose place changes writes
            kind.write(window);
            EXPECT_EQ(client.Written(), "");
            DestroyWindow(window);
        }
    }
}

TEST_F(BoundControls, Stand_Their_Clients_And_Windows_Calls_Back) {
    for (const Kind &kind : Kinds) {
        for (int deed = 0; deed < 4; ++deed) {
            for (const bool in_read : {true, false}) {
                BindingClient client("value");
                Bound bound = kind.make(cache, client);
                const HWND window = Window_For(kind);
                bound.attach(window);
                int calls = 0;
                bool there = true;
                (in_read ? client.on_read : client.on_write) = [&] {
                    if (++calls > 1) return;
                    if (deed == 0) bound.change();
                    if (deed == 1) bound.detach();
                    if (deed == 2) DestroyWindow(window);
                    if (deed == 3) there = false, bound.give_back();
                };
                bound.change();
                kind.write(window);
                if (there) bound.change(), bound.give_back();
                EXPECT_GE(calls, in_read || kind.style != CBS_DROPDOWN ? 1 : 0);
                DestroyWindow(window);
            }
        }
    }
}

TEST_F(BoundControls, Take_A_Window_From_Each_Other_And_Keep_The_Native_Procedure) {
    for (const Kind &former : Kinds) {
        for (const Kind &later : Kinds) {
            BindingClient former_client("1"), later_client("2");
            Bound one = former.make(cache, former_client), other = later.make(cache, later_client);
            const HWND window = Window_For(later);
            const LONG native = Procedure_Of(window);
            one.attach(window);
            other.attach(window);
            later.write(window);
            EXPECT_EQ(former_client.Written(), "") << former.window_class << later.window_class;
            EXPECT_NE(later_client.Written(), "") << former.window_class << later.window_class;
            const LONG taken = Procedure_Of(window);
            one.detach();
            one.change();
            EXPECT_EQ(Procedure_Of(window), taken) << "it is not the former's any more";
            other.detach();
            EXPECT_EQ(Procedure_Of(window), native);
            one.attach(window);
            other.attach(window);
            other.give_back();
            EXPECT_EQ(Procedure_Of(window), native);
            one.give_back();
            SetWindowTextA(window, "alive");
            EXPECT_EQ(GetWindowUserData(window, 0), -1);
            DestroyWindow(window);
        }
    }
}

TEST_F(BoundControls, Without_A_Record_Show_And_Do_Not_Hear) {
    for (const Kind &kind : Kinds) {
        const HWND window = Window_For(kind), used = Window_For(kind);
        SetWindowLongA(used, GWL_USERDATA, 12345);
        BindingClient client("TRUE");
        Bound bound = kind.make(cache, client);
        const LONG native = Procedure_Of(window);
        if (Is_Radio(kind)) {
            DestroyWindow(window); // the group finds the other one
        } else {
            const FailingMemory failing(1, true);
            bound.attach(window);
            EXPECT_EQ(Procedure_Of(window), native) << kind.window_class;
        }
        bound.attach(used);
        EXPECT_EQ(Procedure_Of(used), native);
        bound.change();
        kind.write(used);
        EXPECT_EQ(client.Written(), "");
        bound.attach(nullptr);
        bound.change();
        bound.attach(reinterpret_cast<HWND>(0x7FFFFFF0));
        bound.change();
        bound.give_back();
        EXPECT_EQ(GetWindowLongA(used, GWL_USERDATA), 12345);
        DestroyWindow(used);
        DestroyWindow(window);
    }
}

TEST_F(BoundControls, Are_Null_Without_Memory_And_Null_Is_No_Control) {
    const std::function<void *(CBoundControlCache &)> getters[] = {
        [](CBoundControlCache &from) { return from.GetTextControl(); },
        [](CBoundControlCache &from) { return from.GetCheckboxControl(); },
        [](CBoundControlCache &from) { return from.GetListboxControl(); },
        [](CBoundControlCache &from) { return from.GetComboboxControl(); },
        [](CBoundControlCache &from) { return from.GetRadioGroupControl(nullptr, nullptr); }};
    for (const auto &get : getters) {
        const FailingMemory failing(1);
        EXPECT_EQ(get(cache), nullptr);
    }
    cache.ReturnTextControl(nullptr);
    cache.ReturnCheckboxControl(nullptr);
    cache.ReturnListboxControl(nullptr);
    cache.ReturnComboboxControl(nullptr);
    cache.ReturnRadioGroupControl(nullptr);
}

// A pointer to a virtual operation holds 1 plus the slot's offset.
template <class Operation>
long Slot(Operation operation) {
    long word;
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / 4;
}

struct OpenText : CBoundTextControl {
    using CBoundTextControl::GetWndProc;
};

TEST_F(BoundControls, Have_The_Slots_And_References_Of_Their_Interfaces) {
    using N = IBindingNotifierInterface;
    using C = IBindingClientInterface;
    long expected = 0;
    for (const long slot :
         {Slot(&N::QueryInterface), Slot(&N::AddRef), Slot(&N::Release), Slot(&N::Binding_Changed),
          Slot(&N::Binding_Destroyed), Slot(&N::Binding_Invalid), Slot(&N::Binding_Valid),
          Slot(&N::Install_Client_Interface), Slot(&CBoundControlNotifier::AttachTo),
          Slot(&CBoundControlNotifier::Detach), Slot(&OpenText::GetWndProc)})
        EXPECT_EQ(slot, expected++);
    EXPECT_EQ(Slot(&C::Read_Value), 3);
    EXPECT_EQ(Slot(&C::Write_Value), 5);
    EXPECT_EQ(Slot(&C::Get_Value_Size), 6);
    EXPECT_EQ(Slot(&C::Write_On_Key), 7);

    const GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    for (CBoundControlNotifier *notifier : {static_cast<CBoundControlNotifier *>(new CBoundTextControl),
                                            static_cast<CBoundControlNotifier *>(new CBoundRadioGroupControl(
                                                List_Of({1L}), List_Of({"radio"})))}) {
        void *out = nullptr;
        EXPECT_EQ(notifier->QueryInterface(unknown, &out), S_OK);
        EXPECT_EQ(notifier->QueryInterface(IID_IBindingNotifierInterface, &out), S_OK);
        EXPECT_EQ(out, notifier);
        EXPECT_EQ(notifier->QueryInterface(IID_IListInterface, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(notifier->Release(), 1u);
        EXPECT_EQ(notifier->Release(), 0u) << "all of it has gone";
    }
}

} // namespace
