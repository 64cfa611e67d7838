#pragma once
// A value behind a bound control: what is written to it is written down, and it may do more in any call.

#include <kelmara/kelmara.h>

#include <tests/support/control_verbs.h>
#include <tests/support/test_memory.h>

#include <cstring>

struct BindingClient final : IBindingClientInterface {
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
        EXPECT_STREQ(text, value.c_str()) << "the text outlives what we do";
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

inline LRESULT Tell(HWND window, UINT message, WPARAM wparam = 0, const void *lparam = nullptr) {
    return SendMessageA(window, message, wparam, reinterpret_cast<LPARAM>(lparam));
}

inline CDSList *New_List(std::initializer_list<int> numbers) {
    auto *const list = new CDSList;
    for (const int number : numbers) list->Add(number, 0);
    return list;
}

inline CDSList *New_List(std::initializer_list<const char *> texts) {
    auto *const list = new CDSList;
    for (const char *text : texts) list->AddCString(const_cast<char *>(text), 0);
    return list;
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
    BindingClient client;
    CBoundControlCache cache;
};
