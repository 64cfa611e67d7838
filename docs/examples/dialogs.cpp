// An edit field is bound to a value: it shows the value, and what a user types is written back.
#include <kelmara/kelmara.h>

#include <platform/machine.h>
#include <platform/user.h>
#include <platform/window_constants.h>

#include <cstdio>

// The side of the value. The control does not count its reference.
class Name final : public IBindingClientInterface {
  public:
    long QueryInterface(GUID const &, void **out) override {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    void Read_Value(long *size, char *buffer) override {
        std::snprintf(buffer, static_cast<std::size_t>(*size), "%s", value);
    }
    void Reserved() override {}
    void Write_Value(char *text) override { std::snprintf(value, sizeof value, "%s", text); }
    long Get_Value_Size() override { return sizeof value; } // the field takes 15 characters
    bool Write_On_Key() override { return true; }

    char value[16] = "Ann";
};

int main() {
    HWND edit = CreateWindowExA(0, "EDIT", "", WS_VISIBLE | WS_POPUP, 0, 0, 200, 20, nullptr, nullptr,
                                nullptr, nullptr);
    Name name;
    CBoundControlCache controls; // makes and owns the control
    CBoundTextControl *text = controls.GetTextControl();
    if (!edit || !text || !text->AttachTo(edit)) return 1;
    text->Install_Client_Interface(&name);
    text->Binding_Changed(); // the value is shown

    SetFocus(edit);
    Press_Key(VK_END);
    Type_Text("abel"); // the machine's hands
    char shown[32];
    GetWindowTextA(edit, shown, sizeof shown);
    std::printf("shown: %s, kept: %s\n", shown, name.value);

    controls.ReturnTextControl(text);
    return DestroyWindow(edit) ? 0 : 1;
}
