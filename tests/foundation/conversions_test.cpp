#include <kelmara/foundation/conversions.h>

#include <platform/errors.h>

#include <climits>
#include <cstring>
#include <functional>

namespace {

// What a function makes of a buffer of `size` bytes filled with '#'.
std::string Written(int size, const std::function<void(char *)> &write) {
    std::string buffer(static_cast<std::size_t>(size) + 1, '#');
    write(buffer.data());
    EXPECT_EQ(buffer.back(), '#') << "wrote beyond its " << size << " bytes";
    buffer.pop_back();
    return buffer;
}

std::string Text(const std::string &content) {
    return content + '\0';
}

std::string Hex(unsigned long value, int digits) {
    return Written(digits + 1, [&](char *out) { NumToHex(value, digits, out); });
}

const unsigned char *Bytes(const std::string &text) {
    return reinterpret_cast<const unsigned char *>(text.c_str());
}

std::basic_string<unsigned short> Wide(const std::u16string &text) {
    return {text.begin(), text.end()};
}

constexpr long Does_Not_Fit = static_cast<long>(0x8007007Au);
constexpr GUID Sample = {0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0x00, 0xDD, 0x01, 0x06, 0x62, 0xDA}};
constexpr char Sample_Text[] = "6b29fc40-ca47-1067-b31d-00dd010662da";

std::string Guid_Bytes(const char *text) {
    GUID guid;
    std::memset(&guid, '#', sizeof guid);
    StringToGUID(text, &guid);
    return {reinterpret_cast<const char *>(&guid), sizeof guid};
}

TEST(Numbers, GoToTextAndHexadecimalDigits) {
    EXPECT_EQ(Written(12, [](char *out) { EXPECT_EQ(itoa(LONG_MIN, out), out); }), Text("-2147483648"));
    EXPECT_EQ(Written(2, [](char *out) { itoa(0, out); }), Text("0"));
    EXPECT_EQ(Hex(0xABC, 2), Text("bc"));
    EXPECT_EQ(Hex(0xABC, 6), Text("000abc"));
    EXPECT_EQ(Hex(0xFEDCBA98, 8), Text("fedcba98"));
    EXPECT_EQ(Hex(0xFEDCBA98, 10), Text("00fedcba98"));
    EXPECT_EQ(Hex(0xABC, 0), Text(""));
    EXPECT_EQ(Written(1, [](char *out) { NumToHex(0xABC, -7, out); }), Text(""));
}

TEST(Numbers, ComeFromHexadecimalDigits) {
    EXPECT_EQ(HexStringToNum(""), 0u);
    EXPECT_EQ(HexStringToNum("AB"), 171u);
    EXPECT_EQ(HexStringToNum("ab"), 171u);
    EXPECT_EQ(HexStringToNum("fedcba98"), 0xFEDCBA98u);
    EXPECT_EQ(HexStringToNum("1fedcba98"), 0xFEDCBA98u) << "what overflows is lost";
    EXPECT_EQ(HexStringToNum("1g"), 0x10u + 'g' - '0');
    EXPECT_EQ(HexStringToNum("-1"), static_cast<unsigned long>(('-' - '0') * 16 + 1)) << "wraps below 0";
    EXPECT_EQ(HexStringToNum("\xE9"), 0xE9u - '0');
}

TEST(Guids, GoToTextAndBack) {
    EXPECT_EQ(Written(37, [](char *out) { GUIDToString(&Sample, out, true); }), Text(Sample_Text));
    const std::string braced = Written(39, [](char *out) { GUIDToString(&Sample, out, false); });
    EXPECT_EQ(braced, Text("{" + std::string(Sample_Text) + "}"));
    const std::string sample(reinterpret_cast<const char *>(&Sample), sizeof Sample);
    EXPECT_EQ(Guid_Bytes("6B29FC40-CA47-1067-B31D-00DD010662DA"), sample);
    EXPECT_EQ(Guid_Bytes("6b29fc40+ca47+1067 b31d000dd010662da"), sample);
    for (const char *text : {braced.c_str(), Sample_Text + 1, ""}) {
        EXPECT_EQ(Guid_Bytes(text), std::string(16, '\0')) << "\"" << text << "\" is refused by zeroes";
    }
}

TEST(WideText, BecomesNarrowWithinItsSize) {
    const auto wide = Wide(u"t\u20ACxt");
    const auto Expect = [&](const auto &text, int size, long result, const std::string &expected) {
        const int room = size < 0 ? 0 : size;
        const auto Convert = [&](char *out) { EXPECT_EQ(UnicodeToAnsi(text.c_str(), out, size), result); };
        EXPECT_EQ(Written(room, Convert), expected) << size;
        const auto Convert_Quietly = [&](char *out) { Make_API_String(text.c_str(), out, size); };
        EXPECT_EQ(Written(room, Convert_Quietly), expected) << size;
    };
    Expect(wide, 5, 0, Text("t\x80xt"));
    Expect(wide, 4, Does_Not_Fit, Text("") + "###");
    Expect(wide, 3, E_OUTOFMEMORY, Text("") + "##");
    Expect(wide, 0, E_OUTOFMEMORY, "");
    Expect(wide, -1, E_OUTOFMEMORY, "");
    Expect(Wide(u""), 1, 0, Text(""));
    Expect(Wide(u""), 0, Does_Not_Fit, "");
}

TEST(NarrowText, BecomesWideWithinItsSize) {
    EXPECT_EQ(AnsiToUnicode("t\x80xt", nullptr, 99), 8) << "bytes, without a terminator";
    const auto before = Wide(u"######");
    for (const int size : {-1, 0, 1, 4, 5, 6}) {
        auto out = before, quiet_out = before;
        const long result = AnsiToUnicode("t\x80xt", out.data(), size);
        TCHARToUnicode("t\x80xt", quiet_out.data(), size);
        EXPECT_EQ(result, size >= 5 ? 0 : size < 0 ? E_INVALIDARG : Does_Not_Fit) << size;
        EXPECT_EQ(out, size >= 5 ? Wide(std::u16string(u"t\u20ACxt\0#", 6)) : before) << size;
        EXPECT_EQ(quiet_out, out);
    }
}

TEST(NarrowText, IsCopiedWholeForACall) {
    EXPECT_EQ(Written(5, [](char *out) { Make_API_String("text", out, 1); }), Text("text"));
    char overlapping[] = "..text";
    Make_API_String(overlapping + 2, overlapping, 0);
    EXPECT_STREQ(overlapping, "text");
}

TEST(ByteStrings, BecomeHexadecimalDigits) {
    const auto Hex_Of = [](const char *data, int size, int room) {
        return Written(room, [&](char *out) { Gererate_Hex_String(Bytes(data), out, size); });
    };
    const char *const data = "\x05\xA0\xFFmore";
    EXPECT_EQ(Hex_Of(data, 8, 8), std::string("05a0ff\0\0", 8));
    EXPECT_EQ(Hex_Of(data, 7, 7), std::string("05a0\0\0\0", 7));
    EXPECT_EQ(Hex_Of("a", 9, 9), std::string("61\0\0\0\0\0\0\0", 9));
    EXPECT_EQ(Hex_Of(data, 3, 3), std::string(3, '\0'));
    EXPECT_EQ(Hex_Of(data, 1, 1), Text(""));
    for (const int size : {0, -1, INT_MIN}) EXPECT_EQ(Hex_Of(data, size, 2), "##") << size;
}

TEST(ByteStrings, ComeFromHexadecimalDigits) {
    const auto Ascii_Of = [](const char *digits, int size, int room) {
        return Written(room, [&](char *out) { Generate_Ascii_String(Bytes(digits), out, size); });
    };
    EXPECT_EQ(Ascii_Of("05A0f", 4, 4), std::string("\x05\xA0\0\0", 4)) << "a lone digit is dropped";
    EXPECT_EQ(Ascii_Of("616263", 2, 2), "ab") << "full, without a terminator";
    EXPECT_EQ(Ascii_Of("6", 1, 1), Text(""));
    EXPECT_EQ(Ascii_Of("g0", 2, 2), Text("p")) << "the lowest 8 bits of a wrong value";
    for (const int size : {0, -1, INT_MIN}) EXPECT_EQ(Ascii_Of("6162", size, 2), "##") << size;
}

TEST(Addresses, GoToNumbersLowestByteFirst) {
    const std::vector<std::pair<std::string, unsigned long>> addresses = {
        {"1.2.3.4", 0x04030201},
        {"192.168.0.255", 0xFF00A8C0},
        {"1.2.3.4.5", 0x04030201},
        {"1.2", 0x0201},
        {"", 0},
        {"1...4", 0x04000001},
        {"123", 123},
        {"256.257.-1.x", 0x00FF0100},
        {"1000.2.3", 0x03020064}, // "100", "", "2", "3"
        {"1234567", 0x377B},
        {"1.2.3.4567", 0xC8030201}};
    for (const auto &[text, address] : addresses) {
        const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
        EXPECT_EQ(AddressToLong(exact.data()), address) << text;
        EXPECT_EQ(AddressToInt(exact.data()), static_cast<int>(address)) << text;
    }
}

TEST(Addresses, GoToText) {
    char out[16] = "0.0.0.128";
    EXPECT_EQ(AddressToStrInt(out, out), out);
    EXPECT_STREQ(out, "-2147483648");
    EXPECT_EQ(Written(8, [](char *text) { EXPECT_EQ(AddressToString(0x01020304, text), text); }),
              Text("1.2.3.4"));
    EXPECT_EQ(Written(16, [](char *text) { AddressToString(0xFFFFFFFF, text); }), Text("255.255.255.255"));
}

TEST(CharacterCodes, GoThereAndBack) {
    EXPECT_EQ(String_To_Char_Code("Modm"), 0x4D6F646D);
    EXPECT_EQ(String_To_Char_Code("'Modm'"), 0x4D6F646D);
    EXPECT_EQ(Written(5, [](char *out) { Char_Code_To_String(0x4D6F646D, out); }), Text("Modm"));
    for (const unsigned long code : {0x00410042ul, 0xFFFEFD00ul, 0ul, 0x41272727ul}) {
        char text[5];
        Char_Code_To_String(static_cast<long>(code), text);
        EXPECT_EQ(static_cast<unsigned long>(String_To_Char_Code(text)), code);
    }
}

unsigned char *Scrambled(std::string &text) {
    auto *const bytes = reinterpret_cast<unsigned char *>(text.data());
    Lock_String(bytes);
    return bytes;
}

TEST(ScrambledText, ComesBackUnlessItHoldsTheKey) {
    std::string every_byte;
    for (int c = 1; c < 256; ++c) every_byte += c == 0x5A ? "" : std::string(1, static_cast<char>(c));
    for (std::size_t start = 0; start < 9; ++start) {
        std::string text = every_byte.substr(start);
        Unlock_String(Scrambled(text));
        EXPECT_EQ(text, every_byte.substr(start));
    }
    std::string with_key = "aZa";
    Unlock_String(Scrambled(with_key));
    EXPECT_STREQ(with_key.c_str(), "a");
}

TEST(ScrambledText, IsWhatOthersHaveStored) {
    std::string text("aaaaaaaaa\0behind", 16);
    Scrambled(text);
    EXPECT_EQ(text, std::string("\x3B\x76\xEC\xD9\xB3\x67\xCE\x9D\x3B\0behind", 16));
}

} // namespace
