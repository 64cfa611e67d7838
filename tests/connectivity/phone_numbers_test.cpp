#include <kelmara/connectivity/phone_numbers.h>

#include <platform/errors.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

constexpr char Untouched[] = "~";

struct Parsed {
    long result;
    std::vector<std::string> fields; // that were written
};

// Each output has its 255 bytes and no more.
Parsed Parse(const std::string &number) {
    std::unique_ptr<char[]> out[4];
    for (auto &field : out) std::strcpy((field = std::make_unique<char[]>(255)).get(), Untouched);
    Parsed parsed{
        Parse_Canonical_Number(number.c_str(), out[0].get(), out[1].get(), out[2].get(), out[3].get()), {}};
    bool gap = false;
    for (const auto &field : out) {
        EXPECT_FALSE(gap && std::strcmp(field.get(), Untouched) != 0) << number << ": a field behind a gap";
        gap = std::strcmp(field.get(), Untouched) == 0;
        if (!gap) parsed.fields.push_back(field.get());
    }
    EXPECT_EQ(Parse_Canonical_Number(number.c_str(), nullptr, nullptr, nullptr, nullptr), parsed.result);
    return parsed;
}

TEST(PhoneNumbers, AreSplitIntoTheirFields) {
    const std::string good = "+1 (206) 555-1212";
    const std::vector<std::string> whole = {"1", "206", "555", "1212"};
    const struct {
        std::string number;
        long result;
        std::vector<std::string> fields;
    } rows[] = {
        {good, 0, whole},
        {"+44 (0171) 555 1212", 0, {"44", "0171", "555", "1212"}},
        {"+1(206)555-1212", 0, whole},
        {good + " and more", 0, whole},
        {"+1 (206) 555--1212", 0, whole},
        {"+1\t( \t(206)) \t)555 \t- 1212\t", 0, whole},
        {"+1 206) 555-1212", 0, whole},
        {"+1 (2 06) 555-1212", 0, {"1", "2 06", "555", "1212"}},
        {"+x (\xE4\xFF) \x80-\xFE", 0, {"x", "\xE4\xFF", "\x80", "\xFE"}},
        {"+1 (206) 555-", 0, {"1", "206", "555", "-"}},
        {"+1 (206) 555- ", 0, {"1", "206", "555", "-"}},
        {"+1 (206) 555 ", E_UNEXPECTED, {"1", "206", "555"}},
        {"", E_INVALIDARG, {}},
        {"1 (206) 555-1212", E_INVALIDARG, {}},
        {" " + good, E_INVALIDARG, {}},
        {"+", E_UNEXPECTED, {}},
        {"+ (206) 555-1212", E_UNEXPECTED, {}},
        {"+(206) 555-1212", E_UNEXPECTED, {}},
        {"+1206", E_UNEXPECTED, {}},
        {"+1 206 555-1212", E_UNEXPECTED, {"1"}},
        {"+1 () 555-1212", E_UNEXPECTED, {"1"}},
        {"+1 (206) 5551212", E_UNEXPECTED, {"1", "206"}},
    };
    for (const auto &[number, result, fields] : rows) {
        const Parsed parsed = Parse(number);
        EXPECT_EQ(parsed.result, result) << number;
        EXPECT_EQ(parsed.fields, fields) << number;
    }
    EXPECT_EQ(Parse_Canonical_Number(nullptr, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST(PhoneNumbers, MayEndAnywhere) {
    const std::string number = "+44 (0171) 555 1212", fields = "00001111112322234444";
    for (std::size_t length = 0; length <= number.size(); ++length) {
        const Parsed parsed = Parse(number.substr(0, length));
        EXPECT_EQ(parsed.fields.size(), static_cast<std::size_t>(fields[length] - '0')) << length;
        EXPECT_EQ(parsed.result, length == 0             ? E_INVALIDARG
                                 : fields[length] == '4' ? 0
                                                         : E_UNEXPECTED)
            << length;
    }
}

TEST(PhoneNumbers, HaveLongFieldsCut) {
    for (const std::size_t length : {253, 254, 255, 256, 1000}) {
        const std::size_t cut = std::min<std::size_t>(length, 254);
        const std::string d(length, '7');
        const Parsed parsed = Parse("+" + d + " (" + d + "x) " + d + "x-" + d);
        EXPECT_EQ(parsed.result, 0);
        for (const std::string &field : parsed.fields)
            EXPECT_EQ(field.substr(0, cut), d.substr(0, cut)) << length;
        EXPECT_EQ(parsed.fields.at(0).size() + parsed.fields.at(3).size(), 2 * cut);
    }
}

} // namespace
