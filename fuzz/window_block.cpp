// The block of the machine's windows, with anything but its locks damaged under its users' hands: calls end
// and stay inside the block, what is told of a window is terminated, and a process can destroy its own.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <platform/machine_contents.h>
#include <platform/user.h>
#include <platform/user/shared_windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

using Table = SharedWindows::Table;

// A part of the table that processes write without its lock, or with it.
struct Part {
    char *begin;
    std::string whole;
};

std::vector<Part> Parts_Of(Table &table) {
    std::vector<Part> parts;
    const auto add = [&parts](void *first, void *behind) {
        char *const begin = static_cast<char *>(first);
        parts.push_back({begin, std::string(begin, static_cast<char *>(behind))});
    };
    add(&table.foreground, &table.threads);
    for (ThreadRow &row : table.threads) add(&row.process_id, &row + 1);
    for (WindowRow &row : table.windows) add(&row, &row + 1);
    return parts;
}

HWND New_Window(const char *title) {
    return CreateWindowExA(0, "STATIC", title, WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr,
                           nullptr);
}

std::vector<Part> &Parts() {
    static std::vector<Part> *const parts = [] {
        REQUIRE(New_Window("Always there"));
        char *const file = Map_Shared_File("block-windows", Shared_File_Header + sizeof(Table));
        REQUIRE(file);
        return new std::vector<Part>(Parts_Of(*reinterpret_cast<Table *>(file + Shared_File_Header)));
    }();
    return *parts;
}

// The rows that are in use come first in both tables.
void Damage(FuzzInput &input) {
    const unsigned what = input.Byte();
    const std::size_t rows = (Parts().size() - 1) / 2, row = what / 4 % 4;
    Part &part = Parts()[what % 4 == 0 ? 0 : what % 4 == 1 ? 1 + row : 1 + rows + row];
    const std::size_t place = static_cast<std::uint16_t>(input.Short()) % part.whole.size();
    const std::string_view bytes =
        input.Take(std::min<std::size_t>(1 + input.Byte() % 8, part.whole.size() - place));
    std::copy(bytes.begin(), bytes.end(), part.begin + place);
}

void Put_Back() {
    for (Part &part : Parts()) std::copy(part.whole.begin(), part.whole.end(), part.begin);
}

bool Is_Whole(const MachineTopWindow *window, void *) {
    REQUIRE(strnlen(window->title, sizeof window->title) < sizeof window->title);
    REQUIRE(strnlen(window->window_class, sizeof window->window_class) < sizeof window->window_class);
    return true;
}

void Ask(HWND window, unsigned what) {
    std::array<char, 600> text;
    DWORD process = 0;
    switch (what % 8) {
    case 0:
        REQUIRE(GetWindowTextA(window, text.data(), text.size()) < static_cast<int>(text.size()));
        return;
    case 1:
        REQUIRE(InternalGetWindowTextA(window, text.data(), text.size()) < static_cast<int>(text.size()));
        return;
    case 2:
        ShowWindow(window, static_cast<int>(what / 8 % 11));
        return;
    case 3:
        SetForegroundWindow(window);
        return;
    case 4:
        GetLastActivePopup(window);
        return;
    case 5:
        GetWindowThreadProcessId(window, &process);
        return;
    case 6:
        IsIconic(GetForegroundWindow());
        return;
    default:
        PostMessageA(window, WM_USER, 0, 0);
    }
}

void Use(FuzzInput &input, std::vector<HWND> &windows) {
    const unsigned what = input.Byte();
    const HWND own = windows.empty() ? nullptr : windows[what / 8 % windows.size()];
    switch (what % 8) {
    case 0:
        if (windows.size() < 4) windows.push_back(New_Window(input.Text().c_str()));
        return;
    case 1:
        SetWindowTextA(own, input.Text().c_str());
        return;
    case 2:
        Ask(reinterpret_cast<HWND>(input.Word()), input.Byte());
        return;
    case 3:
        Ask(own, input.Byte());
        return;
    case 4:
        Visit_Machine_Windows(Is_Whole, nullptr);
        return;
    default:
        Damage(input);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    std::vector<HWND> windows;
    Parts();
    while (input.More()) Use(input, windows);
    for (const HWND window : windows) REQUIRE(!window || DestroyWindow(window));
    Put_Back();
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
    return 0;
}
