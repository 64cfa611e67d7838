// The frame of a program of the suite: one copy at a time, texts by identifier, a log, a way to the end.
#include <kelmara/kelmara.h>

#include <platform/com.h>
#include <platform/user.h>
#include <platform/window_constants.h>

#include <cstdio>

static LRESULT Main_Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcA(window, message, wparam, lparam);
}

static HWND Make_Main_Window() {
    WNDCLASSA main_class = {};
    main_class.lpfnWndProc = Main_Procedure;
    main_class.lpszClassName = "ExampleMain";
    if (!RegisterClassA(&main_class)) return nullptr;
    return CreateWindowExA(0, "ExampleMain", "Example", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300,
                           nullptr, nullptr, nullptr, nullptr);
}

int main() {
    Init_Kelmara();        // the first allocation, before any thread
    Setup_TAPI(nullptr);   // only a program that dials
    CoInitialize(nullptr); // only a program that uses components

    HWND window = Make_Main_Window();
    if (!window || !First_Instance("Example", "Main", window)) return 0; // the older copy is in front now
    Std_Log_Entry("Example has started");

    CWorldBeat beat;
    if (beat.Load_Localization("english.ltx", false) == 0) beat.Localize_Dialog(window);
    SetWindowTextA(window, "Example - ready");
    Update_Instance("Example", window); // the record holds the title
    std::printf("running: %s\n", Instance_Available("Example", nullptr) ? "yes" : "no");

    PostMessageA(window, WM_CLOSE, 0, 0); // here a user would work
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    std::puts("ended");
    CoUninitialize();
    return 0;
}
