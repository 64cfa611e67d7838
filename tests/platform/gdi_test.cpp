// Fonts, device contexts and the measures of text.

#include <platform/gdi.h>
#include <platform/kernel.h>
#include <platform/user.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

namespace {

struct DC {
    explicit DC(HWND of = nullptr) : window(of), dc(GetDC(of)) {}
    ~DC() { ReleaseDC(window, dc); }
    DC(const DC &) = delete;
    DC &operator=(const DC &) = delete;
    operator HDC() const { return dc; }
    LONG Width(const std::string &text) const {
        SIZE size = {-1, -1};
        GetTextExtentPoint32A(dc, text.data(), static_cast<int>(text.size()), &size);
        return size.cx;
    }

    HWND window;
    HDC dc;
};

TEST_F(WindowTest, A_Selected_Font_Is_What_Text_Is_Measured_By) {
    DC dc;
    const HGDIOBJ before = SelectObject(dc, GetStockObject(DEFAULT_GUI_FONT));
    EXPECT_EQ(before, GetStockObject(SYSTEM_FONT));
    TEXTMETRICA metrics;
    ASSERT_TRUE(GetTextMetricsA(dc, &metrics));
    EXPECT_EQ(metrics.tmHeight, 13);
    const LONG usual = dc.Width("Measured text");
    LOGFONTA wanted = {};
    wanted.lfHeight = -22; // twice the height of the characters
    const HFONT large = CreateFontIndirectA(&wanted);
    SelectObject(dc, large);
    ASSERT_TRUE(GetTextMetricsA(dc, &metrics));
    EXPECT_EQ(metrics.tmHeight, 26);
    EXPECT_EQ(dc.Width("Measured text"), 2 * usual);
    EXPECT_FALSE(DeleteObject(large)); // it is selected
    EXPECT_EQ(SelectObject(dc, before), large);
    EXPECT_TRUE(DeleteObject(large));
    EXPECT_EQ(Error_Of(SelectObject(dc, large)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(DeleteObject(large)), ERROR_INVALID_HANDLE);
}

TEST_F(WindowTest, A_Device_Context_Goes_Back_To_Its_Window) {
    TestWindow window(WS_POPUP, {0, 0, 9, 9});
    const HDC dc = GetDC(window);
    EXPECT_EQ(Gdi_Object_Count(), 1u);
    EXPECT_EQ(ReleaseDC(nullptr, dc), 0);
    EXPECT_EQ(ReleaseDC(window, dc), 1);
    EXPECT_EQ(ReleaseDC(window, dc), 0);
    EXPECT_EQ(Error_Of(GetDC(reinterpret_cast<HWND>(0x7FFFFFF0))), ERROR_INVALID_WINDOW_HANDLE);
    TEXTMETRICA metrics;
    EXPECT_EQ(Error_Of(GetTextMetricsA(dc, &metrics)), ERROR_INVALID_HANDLE);
}

} // namespace
