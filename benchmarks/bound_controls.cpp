// What a bound control costs beside the window calls that it makes: from a key's release to the client, and
// from the client to the window.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <kelmara/dialogs/bound_control_cache.h>

#include <platform/user.h>

#include <cstring>
#include <string>

namespace {

const std::string Value(255, 'v');

struct Client final : IBindingClientInterface {
    long QueryInterface(GUID const &, void **) override { return -1; }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    void Read_Value(long *, char *buffer) override { std::memcpy(buffer, Value.c_str(), Value.size() + 1); }
    void Reserved() override {}
    void Write_Value(char *text) override { measure::Keep(text[0]); }
    long Get_Value_Size() override { return static_cast<long>(Value.size()) + 1; }
    bool Write_On_Key() override { return true; }
};

HWND New_Edit() {
    return CreateWindowExA(0, "Edit", Value.c_str(), WS_POPUP, 0, 0, 99, 20, nullptr, nullptr, nullptr,
                           nullptr);
}

void Measure() {
    CBoundControlCache cache;
    CBoundTextControl *const control = cache.GetTextControl();
    Client client;
    const HWND bound = New_Edit(), plain = New_Edit();
    control->AttachTo(bound);
    control->Install_Client_Interface(&client);
    const auto release_key = MEASURED {
        SendMessageA(bound, WM_KEYUP, 'A', 0);
    };
    const auto read_plain = MEASURED {
        char text[256];
        measure::Keep(GetWindowTextLengthA(plain));
        GetWindowTextA(plain, text, sizeof text);
        client.Write_Value(text);
        SendMessageA(plain, WM_KEYUP, 'A', 0);
    };
    measure::Compare("from a key to the client, 255 characters", release_key, read_plain, 2.0);
    measure::Compare(
        "from the client to the window", MEASURED { control->Binding_Changed(); },
        MEASURED { SetWindowTextA(plain, Value.c_str()); }, 2.0);
    DestroyWindow(bound);
    DestroyWindow(plain);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    measure::Heading("bound controls", "the same window calls");
    Measure();
    return 0;
}
