// Registry text and forms of values, without a machine.

#include <tools/failure.h>
#include <tools/reg/text_reader.h>
#include <tools/reg/text_writer.h>
#include <tools/reg/value_form.h>

#include <gmock/gmock.h>

#include <random>

namespace {

using namespace tools::reg;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char Begin[] = "REGEDIT4\n[HKCU\\a]\n"; // values stand in line 3

// Everything that a text asks for, a line for each.
std::vector<std::string> Asked(const std::string &text) {
    std::vector<std::string> lines;
    for (const Section &section : Read_Registry_Text(text, "file")) {
        lines.push_back((section.deleted ? "-" : "") + section.key.Text());
        for (const Item &item : section.items)
            lines.push_back(Written_Name(item.name) + '=' + (item.value ? Written_Data(*item.value) : "-"));
    }
    return lines;
}

std::string Fault_Of(const std::string &text) {
    try {
        Asked(text);
    } catch (const tools::FaultInFile &fault) {
        return fault.what();
    }
    return "no fault";
}

struct Spelling {
    const char *text, *asked;
};

TEST(RegText, ValuesAreReadInEverySpelling) {
    for (const Spelling &row : std::initializer_list<Spelling>{
             {"@=\"\"\n", "@=\"\""},
             {"\"\"=\"x\"", "@=\"x\""},
             {"  \"a b\\\\\\\"=;\" = \"\\\\;\\\"\" ; \"rest\"\r\n", "\"a b\\\\\\\"=;\"=\"\\\\;\\\"\""},
             {"\"n\"=DWORD:FfFf;x\n", "\"n\"=dword:0000ffff"},
             {"\"n\"=hex(4):01,00,00,00\n", "\"n\"=dword:00000001"},
             {"\"n\"=hex(4):01\n", "\"n\"=hex(4):01"},
             {"\"b\"=hex:\n", "\"b\"=hex:"},
             {"\"b\"=hex:\\\r\n 0A , 0b,\\ \n\t0c\\\n ; end\n", "\"b\"=hex:0a,0b,0c"},
             {"\"s\"=hex(1):61,00\n", "\"s\"=\"a\""},
             {"\"s\"=hex(1):61,00,00\n", "\"s\"=hex(1):61,00,00"},
             {"\"s\"=hex(FFFFFFFF):61\n", "\"s\"=hex(ffffffff):61"},
             {"@=-", "@=-"},
         })
        EXPECT_EQ(Asked(Begin + std::string(row.text)).at(1), row.asked) << row.text;
    EXPECT_EQ(Asked("regedit4 \r\n\r\n [hklm\\\\a]] [b\\ c \\] ; d\r\n[-HKU\\x]\n"),
              (std::vector<std::string>{"HKEY_LOCAL_MACHINE\\a]] [b\\ c ", "-HKEY_USERS\\x"}));
}

TEST(RegText, FaultsTellTheirLine) {
    for (const Spelling &row : std::initializer_list<Spelling>{
             {"\"x\"=dword:12", "file:3: the last line has no end"},
             {"\"x\"=hex:12", "file:3: the last line has no end"},
             {"\"x\"=hex:1\n", "file:3: two hexadecimal digits"},
             {"\"x\"=hex:01,\n", "file:3: two hexadecimal digits"},
             {"\"x\"=hex:01,\\\n", "file:3: the text ends"},
             {"\n\"x\"=hex:01,\\\n\\x\n", "file:5: a backslash among bytes"},
             {"\"x\"=hex(123456789):\n", "file:3: one to eight"},
             {"\"x\"=dword:\n", "file:3: one to eight"},
             {"\"x\"=\"c:\\temp\"\n", "file:3: a backslash in quotes"},
             {"\"x\"=\"c\\\"\n", "file:3: the closing quote"},
             {"\"x\"=\"\" y\n", "file:3: something stands behind"},
             {"\"x\"=\"a\rb\"\n", "file:3: a carriage return"},
             {"\"x\" y\n", "file:3: a '='"},
             {"x\n", "file:3: neither"},
             {"[-HKCU\\b]\n@=\"\"\n", "file:4: a value below a key that is deleted"},
             {"[-HKCU\\\\]\n", "file:3: a root"},
             {"[HKXX\\b]\n", "file:3: 'HKXX' is no root"},
             {"[HKCU\\b];]\n", "file:3: a comment behind a key"},
             {"[HKCU\\b", "file:3: the key's ']'"},
             {"[-HKCU\\b]", "file:3: the last line has no end"},
         })
        EXPECT_THAT(Fault_Of(Begin + std::string(row.text)), StartsWith(row.asked)) << row.text;
    for (const std::string &text : {std::string(), std::string("\n"), std::string("REGEDIT5\n"),
                                    std::string("\xEF\xBB\xBFREGEDIT4\n"), std::string("R\0E\0", 4)})
        EXPECT_THAT(Fault_Of(text), StartsWith("file:1: "));
    const std::string longest_key(255, 'k'), longest_name(16383, 'n');
    EXPECT_EQ(Fault_Of("REGEDIT4\n[HKCU\\" + longest_key + "]\n\"" + longest_name + "\"=\"\"\n"), "no fault");
    EXPECT_THAT(Fault_Of("REGEDIT4\n[HKCU\\k" + longest_key + "]\n"), HasSubstr("255"));
    EXPECT_THAT(Fault_Of(Begin + ("\"n" + longest_name + "\"=\"\"\n")), HasSubstr("16383"));
}

TEST(RegText, NoCutIsTakenForAnotherText) {
    std::string good =
        "REGEDIT4\r\n\r\n[HKCU\\a];x\r\n@=\"a\\\\b\"\r\n\"n\"=dword:0000002a ; n\r\n"
        "\"b\"=hex:01,02,\\\r\n  03,04\r\n\"e\"=hex(2):41,00\r\n[-HKCU\\b]\r\n[HKLM\\c]\r\n\"o\"=-\r\n";
    const std::vector<std::string> whole = Asked(good);
    for (std::size_t size = 0; size < good.size(); ++size) {
        std::vector<std::string> part;
        try {
            part = Asked(good.substr(0, size));
        } catch (const tools::FaultInFile &) {
            continue;
        }
        ASSERT_LE(part.size(), whole.size());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin())) << "cut at " << size;
    }
    for (char &byte : good) {
        for (int bit = 0; bit < 8; ++bit) {
            byte = static_cast<char>(byte ^ 1 << bit);
            Fault_Of(good); // ends, and with nothing but a fault
            byte = static_cast<char>(byte ^ 1 << bit);
        }
    }
}

TEST(RegText, FormsLeadBackToTheSameBytes) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        Value value{random() % 13, std::string(random() % 10, '\0')};
        for (char &byte : value.data) byte = random() % 3 ? static_cast<char>(random()) : '\0';
        ASSERT_EQ(Value_Of(Form_Of(value)), value) << "seed " << seed << ", round " << round;
    }
    const Form list{"multi_sz", {"[a,b]", " "}};
    EXPECT_EQ(Form_Of(Value_Of(list)).data, list.data);
    EXPECT_EQ(Value_Of({"hex(b)", {"01, 02", "0304"}}), (Value{REG_QWORD, "\1\2\3\4"}));
    for (const Form &bad : std::initializer_list<Form>{{"dword", {"4294967296"}},
                                                       {"dword", {"-1"}},
                                                       {"qword", {"0x"}},
                                                       {"qword", {"18446744073709551616"}},
                                                       {"binary", {"123"}},
                                                       {"binary", {"0,1"}},
                                                       {"multi_sz", {"a", ""}},
                                                       {"sz", {}},
                                                       {"sz", {"a", "b"}},
                                                       {"hex()", {}},
                                                       {"SZ", {"a"}}})
        EXPECT_THROW(Value_Of(bad), tools::Failure) << bad.type;
}

} // namespace
