#include <tests/support/handles.h>

namespace {

using Wide = std::basic_string<WCHAR>;

const Wide Text = {'t', 'e', 'x', 't'};

int Narrow(int length, char *out, int size) {
    return WideCharToMultiByte(CP_ACP, 0, Text.c_str(), length, out, size, nullptr, nullptr);
}

int Widen(const char *text, int length, WCHAR *out, int size, UINT page = CP_ACP, DWORD flags = 0) {
    return MultiByteToWideChar(page, flags, text, length, out, size);
}

TEST(TextConversion, ReplacesWhatTheCodePageDoesNotHave) {
    const Wide text = {'a', 0x416, 0x20AC, 0xD83D, 0xDE00};
    char out[8];
    BOOL replaced = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, out, 8, nullptr, &replaced), 6);
    EXPECT_STREQ(out, "a?\x80??");
    EXPECT_TRUE(replaced);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, out, 8, "_", nullptr), 6);
    EXPECT_STREQ(out, "a_\x80__");
}

TEST(TextConversion, RefusesWhatItCannotDoAndWritesNothing) {
    char narrow[8] = "before";
    WCHAR wide[8] = {9};
    EXPECT_EQ(Error_Of(Narrow(-1, narrow, 4)), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(Error_Of(Widen("text", -1, wide, 4)), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(Error_Of(Widen("text", -1, wide, 8, CP_ACP, 1)), ERROR_INVALID_FLAGS);
    const auto Expect_Bad = [](int result) {
        EXPECT_EQ(Error_Of(result), ERROR_INVALID_PARAMETER);
        SetLastError(0);
    };
    for (const int length : {0, -2}) Expect_Bad(Narrow(length, narrow, 8));
    Expect_Bad(Narrow(-1, narrow, -1));
    Expect_Bad(Narrow(-1, nullptr, 8));
    Expect_Bad(Widen(nullptr, -1, wide, 8));
    Expect_Bad(Widen("text", -1, wide, 8, 437));
    EXPECT_STREQ(narrow, "before");
    EXPECT_EQ(wide[0], 9);
}

} // namespace
