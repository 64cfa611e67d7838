#pragma once
// A value behind a bound control: what is written to it is written down, and it may do more in any call.

#include <kelmara/kelmara.h>

#include <tests/support/control_verbs.h>
#include <tests/support/test_memory.h>

#include <cstring>

class BindingClient final : public IBindingClientInterface {
  public:
    explicit BindingClient(std::string initial = "") : value(std::move(initial)) {}

    long QueryInterface(GUID const &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    /// As much as there is room for, without a terminator when it does not fit.
    void Read_Value(long *in_out, char *buffer) override {
        room = *in_out;
        std::memcpy(buffer, value.c_str(), std::min(value.size() + 1, static_cast<std::size_t>(room)));
        *in_out = 1 << 30;
        if (on_read) on_read();
    }
    void Reserved() override { ADD_FAILURE() << "never called"; }
    void Write_Value(char *text) override {
        value = text;
        written += "[" + value + "]";
        if (on_write) on_write();
        EXPECT_EQ(value.substr(0, 3), std::string(text).substr(0, 3)) << "the text outlives what we do";
    }
    long Get_Value_Size() override {
        if (on_size) on_size();
        return size != Own_Size ? size : static_cast<long>(value.size()) + 1;
    }
    bool Write_On_Key() override {
        if (on_ask) on_ask();
        return on_key;
    }
    /// "[text][text]" of what has been written since the last call.
    std::string Written() { return std::exchange(written, {}); }

    static constexpr long Own_Size = -100; // the value's

    std::string value, written;
    long size = Own_Size, room = 0;
    bool on_key = true;
    std::function<void()> on_read, on_write, on_size, on_ask;
};

inline std::string Text_Of_Window(HWND window) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1, 0);
    GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    text.pop_back();
    return text;
}

inline LRESULT Tell(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
    return SendMessageA(window, message, wparam, lparam);
}

inline LPARAM As_Parameter(const char *text) {
    return reinterpret_cast<LPARAM>(text);
}

inline void Work_Off_Queue() {
    for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageA(&message);
}

class BindingTest : public WindowTest {
  protected:
    void TearDown() override {
        while (const HWND control = GetWindow(dialog, GW_CHILD)) DestroyWindow(control);
        WindowTest::TearDown();
    }

    CDSList warm_up; // the items' pool is not what a test counts
    NoLeak no_leak;
    TestDialog dialog;
    CBoundControlCache cache;
};
