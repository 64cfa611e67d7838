// What all kinds of bound controls have in common.

#include <tests/dialogs/binding_client.h>

namespace {

/// A control of one kind, in the verbs that all have.
struct Bound {
    std::function<void(HWND)> attach;
    std::function<void()> detach, change, give_back;
    CBoundControlNotifier *notifier;
};

struct Kind {
    const char *window_class;
    DWORD style;
    Bound (*make)(CBoundControlCache &cache, BindingClient &client);
    void (*write)(HWND window); // does what the control writes at
};

template <auto Give_Back, class Control>
Bound As_Bound(CBoundControlCache &cache, BindingClient &client, Control *control,
               CBoundControlNotifier *notifier) {
    notifier->Install_Client_Interface(&client);
    return {[control](HWND window) { control->AttachTo(window); }, [control] { control->Detach(); },
            [notifier] { notifier->Binding_Changed(); }, [&cache, control] { (cache.*Give_Back)(control); },
            notifier};
}

template <auto Get, auto Give_Back>
Bound Make(CBoundControlCache &cache, BindingClient &client) {
    auto *const control = (cache.*Get)();
    return As_Bound<Give_Back>(cache, client, control, control);
}

Bound Make_List_Box(CBoundControlCache &cache, BindingClient &client) {
    CBoundListboxControl *const list_box = cache.GetListboxControl();
    auto *const entry = new CBoundListEntry(list_box, 0);
    list_box->AddBoundListEntry(entry);
    return As_Bound<&CBoundControlCache::ReturnListboxControl>(cache, client, list_box, entry);
}

Bound Make_Group(CBoundControlCache &cache, BindingClient &client) {
    auto *const group = cache.GetRadioGroupControl(New_List({1}), New_List({"radio"}));
    Bound bound = As_Bound<&CBoundControlCache::ReturnRadioGroupControl>(cache, client, group, group);
    bound.attach = [group](HWND window) { group->Setup_Bound_Notifiers(GetParent(window)); };
    return bound;
}

using Cache = CBoundControlCache;
const Kind Kinds[] = {
    {"Edit", 0, Make<&Cache::GetTextControl, &Cache::ReturnTextControl>,
     [](HWND window) {
         Tell(window, WM_KEYUP, 'A');
         SetWindowTextA(window, "set");
         Tell(window, WM_KILLFOCUS);
     }},
    {"Button", BS_AUTOCHECKBOX, Make<&Cache::GetCheckboxControl, &Cache::ReturnCheckboxControl>,
     [](HWND window) { Tell(window, BM_CLICK); }},
    {"ComboBox", CBS_DROPDOWN, Make<&Cache::GetComboboxControl, &Cache::ReturnComboboxControl>,
     [](HWND window) { SetWindowTextA(window, "typed"); }},
    {"ListBox", 0, Make_List_Box, [](HWND window) { Tell(window, LB_ADDSTRING, 0, "line"); }},
    {"Button", BS_AUTORADIOBUTTON, Make_Group, [](HWND window) { Tell(window, BM_SETCHECK, 1); }},
};

WNDPROC Below_It = nullptr;
std::function<void()> On_Message;

LRESULT Listening(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (On_Message) On_Message();
    return CallWindowProcA(Below_It, window, message, wparam, lparam);
}

/// Takes itself out while what it stands on works.
LRESULT Hovering(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const LONG below = GetWindowUserData(window, 1);
    const LONG before = SetWindowLongA(window, GWL_WNDPROC, below);
    const LRESULT result = CallWindowProcA(reinterpret_cast<WNDPROC>(below), window, message, wparam, lparam);
    if (before == reinterpret_cast<LONG>(Hovering)) SetWindowLongA(window, GWL_WNDPROC, before);
    return result;
}

class BoundControls : public BindingTest {
  protected:
    /// A procedure over what the window has.
    static WNDPROC Put_On(HWND window, WNDPROC procedure) {
        const LONG word = reinterpret_cast<LONG>(procedure);
        return reinterpret_cast<WNDPROC>(SetWindowLongA(window, GWL_WNDPROC, word));
    }
    HWND Window_For(const Kind &kind) {
        return dialog.Add(kind.window_class, "text", {0, 0, 100, 80}, kind.style, 1);
    }
    static LONG Procedure_Of(HWND window) { return GetWindowLongA(window, GWL_WNDPROC); }
    static bool Is_Radio(const Kind &kind) { return kind.style == BS_AUTORADIOBUTTON; }
};

TEST_F(BoundControls, Give_Their_Windows_Back_In_Every_Order_Of_Ends) {
    enum { Returned, Window_First, Record_First, Detached, Attached_Elsewhere, With_The_Cache, End };
    for (const Kind &kind : Kinds) {
        for (int order = Returned; order < End; ++order) {
            if (order == With_The_Cache && Is_Radio(kind)) continue;
            const NoLeak none_here;
            auto *const dying = new CBoundControlCache;
            Bound bound = kind.make(order == With_The_Cache ? *dying : cache, client);
            HWND window = Window_For(kind);
            const LONG native = Procedure_Of(window);
            bound.change();
            for (int time = 0; time < 2; ++time) bound.attach(window);
            EXPECT_NE(Procedure_Of(window), native);
            bound.change();
            kind.write(window);
            EXPECT_NE(client.Written(), "") << kind.window_class;
            if (order == Window_First) DestroyWindow(window);
            if (order == Record_First) // by somebody who gives back more than was his
                DeleteWindowUserData(reinterpret_cast<void *>(GetWindowLongA(window, GWL_USERDATA)));
            if (order == Detached) bound.detach();
            if (order == Attached_Elsewhere) {
                const HWND former = window;
                window = Window_For(kind);
                if (Is_Radio(kind)) DestroyWindow(former); // the group finds the other one
                bound.attach(window);
                EXPECT_EQ(Procedure_Of(former), Is_Radio(kind) ? 0 : native);
                EXPECT_NE(Procedure_Of(window), native);
                DestroyWindow(former);
            }
            delete dying;
            if (order != With_The_Cache) bound.give_back();
            EXPECT_EQ(Procedure_Of(window), order != Window_First ? native : 0) << kind.window_class << order;
            EXPECT_EQ(GetWindowUserData(window, 0), -1) << "its record has gone";
            client.Written(); // a combo box whose place changes writes
            kind.write(window);
            EXPECT_EQ(client.Written(), "");
            DestroyWindow(window);
        }
    }
}

TEST_F(BoundControls, Stand_Calls_Back_From_Their_Clients_And_Windows) {
    Bound bound;
    HWND window;
    bool there;
    const std::function<void()> deeds[] = {
        [&] { bound.change(); },
        [&] { bound.detach(); },
        [&] { bound.attach(window); },
        [&] { bound.notifier->Binding_Invalid(); },
        [&] { bound.notifier->Install_Client_Interface(nullptr); },
        [&] { DestroyWindow(window); },
        [&] { bound.give_back(), there = false; },
    };
    std::function<void()> on_notice;
    dialog.on_notice = [&](int, UINT) {
        if (on_notice) on_notice();
    };
    for (const Kind &kind : Kinds) {
        for (const auto &deed : deeds) {
            for (auto *const place : {&client.on_read, &client.on_write, &client.on_size, &client.on_ask,
                                      &on_notice, &On_Message}) {
                const bool is_clients = place != &on_notice && place != &On_Message;
                for (int nth = 1; nth <= (place == &On_Message ? 12 : 2); ++nth) {
                    client.value = std::string(299, 'v');
                    client.on_key = nth % 2;
                    bound = kind.make(cache, client);
                    window = Window_For(kind);
                    const LRESULT code = Tell(window, WM_GETDLGCODE);
                    Below_It = Put_On(window, Listening);
                    bound.attach(window);
                    void *const below = reinterpret_cast<void *>(Put_On(window, Hovering));
                    void *const record = InsertWindowUserData(window, 1, below);
                    there = true;
                    int depth = 0;
                    *place = [&] {
                        const bool is_time = ++depth == (place == &On_Message ? nth : 1);
                        if (there && (is_time || (is_clients && &deed == deeds))) deed();
                    };
                    kind.write(window);
                    if (there) bound.change();
                    if (there) bound.notifier->Binding_Invalid();
                    *place = nullptr;
                    const bool was_lost = client.Written().find("[]") != std::string::npos;
                    EXPECT_FALSE(was_lost && &deed != deeds + 3) << kind.window_class; // that blanks it
                    if (!there) bound = kind.make(cache, client);
                    bound.notifier->Install_Client_Interface(&client);
                    bound.notifier->Binding_Valid();
                    bound.attach(window);
                    client.on_key = true;
                    kind.write(window);
                    EXPECT_EQ(client.Written() != "", IsWindow(window)) << kind.window_class;
                    bound.give_back();
                    EXPECT_EQ(Tell(window, WM_GETDLGCODE), IsWindow(window) ? code : 0) << "not deaf";
                    DestroyWindow(window);
                    DeleteWindowUserData(record);
                }
            }
        }
    }
}

TEST_F(BoundControls, Take_A_Window_From_Each_Other_And_Keep_The_Native_Procedure) {
    for (const Kind &former : Kinds) {
        for (const Kind &later : Kinds) {
            BindingClient former_client("1");
            Bound one = former.make(cache, former_client), other = later.make(cache, client);
            const HWND window = Window_For(later);
            const LONG native = Procedure_Of(window);
            one.attach(window);
            Below_It = Put_On(window, Listening);
            other.attach(window);
            later.write(window);
            EXPECT_EQ(former_client.Written(), "") << former.window_class << later.window_class;
            EXPECT_NE(client.Written(), "") << former.window_class << later.window_class;
            const LONG taken = Procedure_Of(window);
            one.detach();
            one.change();
            EXPECT_EQ(Procedure_Of(window), taken) << "it is not the former's any more";
            other.detach();
            EXPECT_EQ(Procedure_Of(window), native);
            other.give_back();
            one.give_back();
            EXPECT_EQ(GetWindowUserData(window, 0), -1);
            DestroyWindow(window);
        }
    }
}

TEST_F(BoundControls, Without_A_Record_Or_A_Window_Hear_Nothing) {
    for (const Kind &kind : Kinds) {
        const HWND window = Window_For(kind);
        Bound bound = kind.make(cache, client);
        const LONG native = Procedure_Of(window);
        {
            const FailingMemory failing(1, true);
            bound.attach(window);
        }
        EXPECT_EQ(Procedure_Of(window), native) << kind.window_class;
        SetWindowLongA(window, GWL_USERDATA, 12345);
        bound.attach(window);
        bound.change();
        kind.write(window);
        EXPECT_EQ(GetWindowLongA(window, GWL_USERDATA), 12345);
        for (const HWND none : {HWND{}, reinterpret_cast<HWND>(0x7FFFFFF0)}) {
            bound.attach(none);
            bound.change();
        }
        EXPECT_EQ(Procedure_Of(window), native);
        EXPECT_EQ(client.Written(), "");
        bound.give_back();
        DestroyWindow(window);
    }
}

TEST_F(BoundControls, Have_The_References_Of_Their_Interfaces) {
    using N = CBoundControlNotifier;
    const GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    N *const notifiers[] = {new CBoundTextControl,
                            new CBoundRadioGroupControl(New_List({1}), New_List({"radio"}))};
    for (N *const notifier : notifiers) {
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
