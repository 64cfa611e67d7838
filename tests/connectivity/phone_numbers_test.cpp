#include <kelmara/connectivity/phone_numbers.h>

#include <platform/errors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

using Fields = std::vector<std::string>;

// The result and the fields that were written. Each output has its 255 bytes and no more.
std::pair<long, Fields> Parse(const std::string &number) {
    std::unique_ptr<char[]> out[4];
    for (auto &field : out) std::strcpy((field = std::make_unique<char[]>(255)).get(), "~");
    const long result =
        Parse_Canonical_Number(number.c_str(), out[0].get(), out[1].get(), out[2].get(), out[3].get());
    EXPECT_EQ(Parse_Canonical_Number(number.c_str(), nullptr, nullptr, nullptr, nullptr), result);
    Fields fields;
    for (const auto &field : out) fields.push_back(field.get());
    while (!fields.empty() && fields.back() == "~") fields.pop_back();
    return {result, fields};
}

TEST(PhoneNumbers, AreSplitIntoTheirFields) {
    const Fields whole = {"1", "206", "555", "1212"};
    const struct {
        const char *number;
        long result;
        Fields fields;
    } rows[] = {
        {"+1 (206) 555-1212", 0, whole},
        {"+44 (0171) 555 1212", 0, {"44", "0171", "555", "1212"}},
        {"+1(206)555-1212", 0, whole},
        {"+1 (206) 555-1212 and more", 0, whole},
        {"+1 (206) 555--1212", 0, whole},
        {"+1\t( \t206)) \t)555 \t- 1212\t", 0, whole},
        {"+1 206) 555-1212", 0, whole},
        {"+x (\xE4 \xFF) \x80-\xFE", 0, {"x", "\xE4 \xFF", "\x80", "\xFE"}},
        {"+1 (206) 555-", 0, {"1", "206", "555", "-"}},
        {"+1 (206) 555- ", 0, {"1", "206", "555", "-"}},
        {"+1 (206) 555 ", E_UNEXPECTED, {"1", "206", "555"}},
        {"", E_INVALIDARG, {}},
        {" +1 (206) 555-1212", E_INVALIDARG, {}},
        {"+", E_UNEXPECTED, {}},
        {"+ (206) 555-1212", E_UNEXPECTED, {}},
        {"+(206) 555-1212", E_UNEXPECTED, {}},
        {"+1206", E_UNEXPECTED, {}},
        {"+1 206 555-1212", E_UNEXPECTED, {"1"}},
        {"+1 () 555-1212", E_UNEXPECTED, {"1"}},
        {"+1 (206) 5551212", E_UNEXPECTED, {"1", "206"}},
    };
    for (const auto &[number, result, fields] : rows)
        EXPECT_EQ(Parse(number), std::pair(result, fields)) << number;
    EXPECT_EQ(Parse_Canonical_Number(nullptr, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST(PhoneNumbers, MayEndAnywhereAndBeOfAnyLength) {
    const std::string number = "+44 (0171) 555 1212", fields = "00001111112322234444";
    for (std::size_t length = 0; length <= number.size(); ++length)
        EXPECT_EQ(Parse(number.substr(0, length)).second.size(), static_cast<unsigned>(fields[length] - '0'));
    for (const std::size_t length : {253, 254, 255, 1000}) {
        const std::string field(length, '7'), cut = field.substr(0, 254);
        EXPECT_EQ(Parse("+" + field + "(" + field + ")" + field + "-" + field),
                  std::pair(0L, Fields(4, cut)));
    }
}

} // namespace
