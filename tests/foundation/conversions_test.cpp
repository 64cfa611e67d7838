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

const unsigned char *Bytes(const char *text) {
    return reinterpret_cast<const unsigned char *>(text);
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

TEST(Conversions, NumbersGoToTextAndComeFromHexadecimalDigits) {
    EXPECT_EQ(Written(12, [](char *out) { EXPECT_EQ(itoa(LONG_MIN, out), out); }), Text("-2147483648"));
    const std::tuple<unsigned long, int, std::string> digits[] = {{0xABC, 2, "bc"},
                                                                  {0xABC, 6, "000abc"},
                                                                  {0xFEDCBA98, 10, "00fedcba98"},
                                                                  {0xABC, 0, ""},
                                                                  {0xABC, -7, ""}};
    for (const auto &[value, count, text] : digits) {
        const auto convert = [value, count](char *out) { NumToHex(value, count, out); };
        EXPECT_EQ(Written(static_cast<int>(text.size()) + 1, convert), Text(text));
    }
    const std::pair<const char *, unsigned long> numbers[] = {
        {"", 0},
        {"aB", 171},
        {"1g", 0x10u + 'g' - '0'},
        {"-1", static_cast<unsigned long>(('-' - '0') * 16 + 1)},
        {"\xE9", 0xE9u - '0'}};
    for (const auto &[text, number] : numbers) EXPECT_EQ(HexStringToNum(text), number) << text;
}

TEST(Conversions, GuidsGoToTextAndBack) {
    EXPECT_EQ(Written(37, [](char *out) { GUIDToString(&Sample, out, true); }), Text(Sample_Text));
    const std::string braced = Written(39, [](char *out) { GUIDToString(&Sample, out, false); });
    EXPECT_EQ(braced, Text("{" + std::string(Sample_Text) + "}"));
    const std::string sample(reinterpret_cast<const char *>(&Sample), sizeof Sample);
    EXPECT_EQ(Guid_Bytes("6B29fc40+ca47+1067 b31d000dd010662da"), sample);
    for (const char *text : {braced.c_str(), Sample_Text + 1, ""}) {
        EXPECT_EQ(Guid_Bytes(text), std::string(16, '\0')) << "\"" << text << "\" is refused by zeroes";
    }
}

TEST(Conversions, WideTextBecomesNarrowWithinItsSize) {
    const std::tuple<std::u16string, int, long, std::string> cases[] = {
        {u"t\u20ACxt", 5, 0, Text("t\x80xt")},
        {u"t\u20ACxt", 4, Does_Not_Fit, Text("") + "###"},
        {u"t\u20ACxt", 3, E_OUTOFMEMORY, Text("") + "##"},
        {u"", 1, 0, Text("")},
        {u"", 0, Does_Not_Fit, ""}};
    for (const auto &[text, size, result, expected] : cases) {
        const auto wide = Wide(text);
        long returned = 1;
        const auto convert = [&, room = size](char *out) {
            returned = UnicodeToAnsi(wide.c_str(), out, room);
        };
        const auto quietly = [&, room = size](char *out) { Make_API_String(wide.c_str(), out, room); };
        EXPECT_EQ(Written(std::max(size, 0), convert), expected) << size;
        EXPECT_EQ(returned, result) << size;
        EXPECT_EQ(Written(std::max(size, 0), quietly), expected) << size;
    }
}

TEST(Conversions, NarrowTextBecomesWideWithinItsSize) {
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
    char overlapping[] = "..text";
    Make_API_String(overlapping + 2, overlapping, 0);
    EXPECT_STREQ(overlapping, "text") << "narrow text is copied whole for a call";
}

TEST(Conversions, BytesBecomeHexadecimalDigitsAndComeBack) {
    using Conversion = void (*)(const unsigned char *, char *, int);
    const auto to_hex = [](auto *in, auto *out, int size) { Gererate_Hex_String(in, out, size); };
    const auto to_bytes = [](auto *in, auto *out, int size) { Generate_Ascii_String(in, out, size); };
    const std::tuple<Conversion, const char *, int, std::string> cases[] = {
        {to_hex, "\x05\xA0\xFFmore", 8, {"05a0ff\0\0", 8}},
        {to_hex, "\x05\xA0\xFFmore", 7, {"05a0\0\0\0", 7}},
        {to_hex, "\x05\xA0\xFFmore", 3, std::string(3, '\0')},
        {to_bytes, "05A0f", 4, {"\x05\xA0\0\0", 4}},
        {to_bytes, "616263", 2, "ab"},
        {to_bytes, "g0", 2, Text("p")}}; // the lowest 8 bits of a wrong value
    for (const auto &[convert, in, size, expected] : cases) {
        EXPECT_EQ(Written(size, [&](char *out) { convert(Bytes(in), out, size); }), expected) << in << size;
        for (const int none : {0, -1, INT_MIN}) {
            EXPECT_EQ(Written(2, [&](char *out) { convert(Bytes(in), out, none); }), "##") << none;
        }
    }
}

TEST(Conversions, AddressesGoToNumbersLowestByteFirstAndToText) {
    const std::pair<std::string, unsigned long> addresses[] = {
        {"192.168.0.255", 0xFF00A8C0}, {"1.2.3.4.5", 0x04030201}, {"1.2", 0x0201},           {"", 0},
        {"256.257.-1.x", 0x00FF0100},  {"1000.2.3", 0x03020064},  {"1.2.3.4567", 0xC8030201}};
    for (const auto &[text, address] : addresses) {
        const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
        EXPECT_EQ(AddressToLong(exact.data()), address) << text;
        EXPECT_EQ(AddressToInt(exact.data()), static_cast<int>(address)) << text;
    }
    char out[16] = "0.0.0.128";
    EXPECT_EQ(AddressToStrInt(out, out), out);
    EXPECT_STREQ(out, "-2147483648");
    EXPECT_EQ(Written(16, [](char *text) { AddressToString(0xFFFFFFFF, text); }), Text("255.255.255.255"));
}

TEST(Conversions, CodesGoThereAndBackAndScrambledTextUnlessItHoldsTheKey) {
    EXPECT_EQ(String_To_Char_Code("'Modm'"), 0x4D6F646D);
    EXPECT_EQ(Written(5, [](char *out) { Char_Code_To_String(0x4D6F646D, out); }), Text("Modm"));
    for (const unsigned long code : {0x4D6F646Dul, 0x00410042ul, 0xFFFEFD00ul, 0ul, 0x41272727ul}) {
        char text[5];
        Char_Code_To_String(static_cast<long>(code), text);
        EXPECT_EQ(static_cast<unsigned long>(String_To_Char_Code(text)), code);
    }
    const auto in = [](std::string &text) { return reinterpret_cast<unsigned char *>(text.data()); };
    std::string stored("aaaaaaaaa\0behind", 16), with_key = "aZa", every_byte;
    Lock_String(in(stored));
    EXPECT_EQ(stored, std::string("\x3B\x76\xEC\xD9\xB3\x67\xCE\x9D\x3B\0behind", 16));
    for (int c = 1; c < 256; ++c) every_byte += c == 0x5A ? "" : std::string(1, static_cast<char>(c));
    for (std::size_t start = 0; start < 9; ++start) {
        std::string text = every_byte.substr(start);
        Lock_String(in(text));
        Unlock_String(in(text));
        EXPECT_EQ(text, every_byte.substr(start));
    }
    Lock_String(in(with_key));
    Unlock_String(in(with_key));
    EXPECT_STREQ(with_key.c_str(), "a");
}

} // namespace
