#include <platform/kernel.h>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide Wide_Text(const std::u16string &text) {
    return Wide(text.begin(), text.end());
}

int Narrow(const Wide &text, int length, char *out, int size) {
    return WideCharToMultiByte(CP_ACP, 0, text.c_str(), length, out, size, nullptr, nullptr);
}

int Widen(const std::string &text, int length, WCHAR *out, int size) {
    return MultiByteToWideChar(CP_ACP, 0, text.c_str(), length, out, size);
}

TEST(TextConversion, BringsEveryByteThereAndBack) {
    char bytes[256], back[256] = {};
    for (int i = 0; i < 256; ++i) bytes[i] = static_cast<char>(i);
    WCHAR wide[256];
    ASSERT_EQ(MultiByteToWideChar(1252, 0, bytes, 256, wide, 256), 256);
    EXPECT_EQ(wide[0x80], 0x20AC);
    EXPECT_EQ(wide[0xE9], 0xE9);
    BOOL replaced = TRUE;
    ASSERT_EQ(WideCharToMultiByte(1252, 0, wide, 256, back, 256, nullptr, &replaced), 256);
    EXPECT_EQ(std::string(back, 256), std::string(bytes, 256));
    EXPECT_FALSE(replaced);
}

TEST(TextConversion, ReplacesWhatTheCodePageDoesNotHave) {
    const Wide text = Wide_Text(u"a\u0416\u20AC\U0001F600");
    char out[8];
    BOOL replaced = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, out, 8, nullptr, &replaced), 6);
    EXPECT_STREQ(out, "a?\x80??");
    EXPECT_TRUE(replaced);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, out, 8, "_", nullptr), 6);
    EXPECT_STREQ(out, "a_\x80__");
}

TEST(TextConversion, CountsTheTerminatorOnlyWhenItIsGivenOne) {
    const Wide wide = Wide_Text(u"text");
    char narrow_out[5] = "????";
    WCHAR wide_out[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(Narrow(wide, -1, nullptr, 0), 5);
    EXPECT_EQ(Narrow(wide, 4, nullptr, 0), 4);
    EXPECT_EQ(Widen("text", -1, wide_out, 0), 5);
    EXPECT_EQ(wide_out[0], 9) << "a size of 0 only asks";
    EXPECT_EQ(Narrow(wide, 2, narrow_out, 2), 2);
    EXPECT_STREQ(narrow_out, "te??");
    EXPECT_EQ(Widen("text", 4, wide_out, 4), 4);
    EXPECT_EQ(Wide(wide_out, 4), wide);
    EXPECT_EQ(wide_out[4], 9);
}

TEST(TextConversion, RefusesWhatItCannotDoAndWritesNothing) {
    const Wide wide = Wide_Text(u"text");
    char narrow_out[8] = "before";
    WCHAR wide_out[8] = {9};
    const auto Expect_Error = [](long error, int result) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(static_cast<long>(GetLastError()), error);
        SetLastError(0);
    };
    Expect_Error(ERROR_INSUFFICIENT_BUFFER, Narrow(wide, -1, narrow_out, 4));
    Expect_Error(ERROR_INSUFFICIENT_BUFFER, Widen("text", -1, wide_out, 4));
    Expect_Error(ERROR_INVALID_PARAMETER, Narrow(wide, 0, narrow_out, 8));
    Expect_Error(ERROR_INVALID_PARAMETER, Narrow(wide, -2, narrow_out, 8));
    Expect_Error(ERROR_INVALID_PARAMETER, Narrow(wide, -1, narrow_out, -1));
    Expect_Error(ERROR_INVALID_PARAMETER, Narrow(wide, -1, nullptr, 8));
    Expect_Error(ERROR_INVALID_PARAMETER, MultiByteToWideChar(CP_ACP, 0, nullptr, -1, wide_out, 8));
    Expect_Error(ERROR_INVALID_PARAMETER, MultiByteToWideChar(437, 0, "text", -1, wide_out, 8));
    Expect_Error(ERROR_INVALID_FLAGS, MultiByteToWideChar(CP_ACP, 1, "text", -1, wide_out, 8));
    EXPECT_STREQ(narrow_out, "before");
    EXPECT_EQ(wide_out[0], 9);
}

} // namespace
