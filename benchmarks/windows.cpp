// How the machine's windows, messages, handles and directories bear numbers: all that the library's dialogs
// and files rest on.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/dialogs/active_help.h>
#include <kelmara/dialogs/bound_control_cache.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <string>
#include <vector>

namespace {

HWND New_Window(HWND parent, long identifier) {
    return CreateWindowExA(0, "Static", "text", parent ? WS_CHILD | WS_VISIBLE : WS_POPUP, 0, 0, 9, 9, parent,
                           reinterpret_cast<HMENU>(identifier), nullptr, nullptr);
}

void Measure_Windows() {
    measure::Growth_Heading("windows");
    measure::Growth make("make a dialog of n controls, destroy it", 1.15),
        find("the last of n controls", 1.1);
    measure::Growth help("give n controls a help text", 1.15);
    for (const long size : measure::Sizes(1000)) {
        const auto fill = [size] {
            const HWND dialog = New_Window(nullptr, 0);
            for (long number = 0; number < size; ++number) New_Window(dialog, number + 1);
            return dialog;
        };
        make.At(size, [&] { DestroyWindow(fill()); });
        const HWND dialog = fill();
        find.At(size, [&] { measure::Keep(GetDlgItem(dialog, static_cast<int>(size))); });
        DestroyWindow(dialog);
        help.At(size, [&] {
            CActiveHelpManager manager;
            const HWND helped = fill();
            manager.Initialize(helped);
            for (long number = 0; number < size; ++number)
                manager.AddControl(GetDlgItem(helped, static_cast<int>(number + 1)), "what it is for");
            DestroyWindow(helped);
        });
    }
}

void Measure_Messages_And_Handles() {
    const HWND window = New_Window(nullptr, 0);
    measure::Growth post("post n messages and take them", 1.1), events("make n events, close them", 1.1);
    measure::Growth cache("get n bound controls, return them", 2.0);
    for (const long size : measure::Sizes(1000)) {
        post.At(size, [&] {
            MSG message;
            for (long number = 0; number < size; ++number) PostMessageA(window, WM_APP, 0, number);
            for (long number = 0; number < size; ++number) GetMessageA(&message, window, WM_APP, WM_APP);
        });
        std::vector<HANDLE> made(static_cast<std::size_t>(size));
        events.At(size, [&] {
            for (HANDLE &event : made) event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
            for (const HANDLE event : made) CloseHandle(event);
        });
        std::vector<CBoundTextControl *> controls(static_cast<std::size_t>(size));
        cache.At(size, [&] {
            CBoundControlCache all;
            for (CBoundTextControl *&control : controls) control = all.GetTextControl();
            for (auto control = controls.rbegin(); control != controls.rend(); ++control)
                all.ReturnTextControl(*control);
        });
    }
    DestroyWindow(window);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    Measure_Windows();
    Measure_Messages_And_Handles();
    return 0;
}
