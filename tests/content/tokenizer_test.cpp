#include <kelmara/content/tokenizer.h>

#include <kelmara/containers/hash_table.h>

#include <platform/files.h>
#include <platform/kernel.h>

#include <tests/content/damaged_texts.h>
#include <tests/support/file_verbs.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/test_memory.h>

#include <climits>
#include <cstring>

namespace {

/// Answers each field with its code, or with what it is told to, and counts the references.
class Host final : public IBindingHostInterface {
  public:
    explicit Host(std::string what_it_is = "") : prefix(std::move(what_it_is)) {}
    ~Host() { EXPECT_EQ(references, 1) << prefix; }

    long QueryInterface(const GUID &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return static_cast<unsigned long>(++references); }
    unsigned long Release() override { return static_cast<unsigned long>(--references); }
    long Get_Field_Value(long field, char *buffer, long size) override {
        EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(size)), std::string(1024, 0)) << "cleared";
        std::string text = prefix;
        for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(field >> shift);
        if (!answer.empty()) text = answer;
        text.copy(buffer, static_cast<std::size_t>(size));
        return result;
    }

    const std::string prefix;
    std::string answer;
    long result = 0, references = 1;
};

class Tokenizer : public CTokenizer {
  public:
    using CTokenizer::Get_Binding_Interface;
};

class Templates : public FileTest {
  protected:
    Templates() { CDSList().Add(0, 0); } // from here on there is a pool

    /// The result, which must fit, or "error N" with a result that is cleared.
    std::string Expanded(const std::string &text) {
        const ExactBytes terminated(text + '\0');
        std::string result(Room, 'x');
        SetLastError(0);
        if (!tokenizer.Tokenize(terminated.Get(), result.data(), Room)) {
            EXPECT_EQ(result, std::string(Room, 0)) << text;
            return "error " + std::to_string(static_cast<long>(GetLastError()));
        }
        EXPECT_EQ(result.back(), 0);
        return result.c_str();
    }
    /// Entries that live as long as the test; sizes without a terminator.
    void Define(CHashTable &table, const char *name, const std::string &value) {
        values_.push_back(std::make_unique<ExactBytes>(value));
        table.Add(name, values_.back()->Get(), values_.back()->Size());
    }
    /// All five sources, set up.
    void Set_Up() {
        variables.Initialize(10);
        codes.Initialize(10);
        Define(variables, "NAME", "Ann");
        Define(codes, "phone", "'PHON'");
        tokenizer.Use_Variable_Table(&variables);
        tokenizer.Use_Token_Table(&codes);
        tokenizer.Use_Binding_Host(&host);
        tokenizer.Use_Component_Desc(&component);
        tokenizer.Add_Binding_Table(0x54544242, &table_host);
    }

    static constexpr int Room = 8192;
    NoLeak no_leak_;
    Host host{"host:"}, table_host{"table:"};
    CHashTable variables, codes;
    ComponentDescriptor component = {{}, "Dialler", 0x4B4D4131, 3};
    Tokenizer tokenizer;

  private:
    std::vector<std::unique_ptr<ExactBytes>> values_;
};

using ByText = std::vector<std::pair<std::string, std::string>>;

TEST_F(Templates, TakeTheirValuesFromFiveSources) {
    Set_Up();
    Define(variables, "SIGILS", "%TEMP%^^$");
    Define(variables, "ZERO", std::string("a\0b", 3));
    Define(variables, "EMPTY", "");
    Define(codes, "Phone", "'FAX ' and more");
    Define(codes, "five", "'FIVE");
    const TestKey shell("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders");
    const TestKey suite("Software\\Dunmerit Software\\Kelmara", HKEY_LOCAL_MACHINE);
    suite.Set("Root", "C:\\Suite");
    suite.Set("Long", std::string(1024, 'l'));
    suite.Set("Longer", std::string(1025, 'l'));
    const ByText cases = {
        {"", ""},
        {"plain > text \x80\xFF", "plain > text \x80\xFF"},
        {"$$%%&&<<^^>>", "$%&<^>>"},
        {"a^name^b^Name^^NAME^", "aAnnbAnnAnn"},
        {"^SIGILS^^ZERO^^EMPTY^.", "%TEMP%^^$a."},
        {"<VERSION>,<version>,<SerialCode>,<NAME>,<OTHER>,<>.", "3,3,KMA1,Dialler,,."},
        {"&phone&,&Phone&,&five&", "host:PHON,host:FAX ,host:FIVE"},
        {"$'TTBB','ABCD'$ $.TTBB...abcd.$", "table:ABCD table:abcd"},
        {"%root%%Missing%|%LONG%|%LONGER%|", "C:\\Suite|" + std::string(1024, 'l') + "||"},
        {"%WINDOWS%|%Temp%|", "C:\\WINDOWS\\|C:\\WINDOWS\\TEMP\\|"},
        {"%DESKTOP%", "\\"},
        {"cut <<<VERSION", "cut <"},
        {"<VER\nSION>^NAME^", "Ann"},
    };
    for (const auto &[text, result] : cases) EXPECT_EQ(Expanded(text), result) << text;
    for (const std::string &desktop : {std::string("C:\\Desk\\"), std::string(256, 'd')}) {
        shell.Set("Desktop", desktop);
        EXPECT_EQ(Expanded("%DESKTOP%"), desktop + (desktop.back() == '\\' ? "" : "\\"));
    }
    shell.Set("Desktop", std::string(257, 'd'));
    EXPECT_EQ(Expanded("%DESKTOP%"), "\\") << "too long";
    std::memset(component.Name, 'n', sizeof component.Name);
    component.Code = 0x41004242;
    component.Version = LONG_MIN;
    EXPECT_EQ(Expanded("<NAME>|<SERIALCODE>|<VERSION>"), std::string(138, 'n') + "|A|-2147483648");
}

TEST_F(Templates, SayWhatFailed) {
    const ByText nothing_set_up = {
        {"<VERSION>", "error -2147024809"},
        {"&phone&", "error -2147024809"},
        {"^NAME^", "error -2147024809"},
        {"$'TTBB','ABCD'$", "error -8314"},
        {"&cut", ""},
    };
    for (const auto &[text, result] : nothing_set_up) EXPECT_EQ(Expanded(text), result) << text;
    Set_Up();
    Define(codes, "short", "'ABC");
    const ByText all_set_up = {
        {"a^MISSING^", "error 1168"},
        {"&short&", "error -2147024809"},
        {"$'TTTT','ABCD'$", "error -8314"},
        {"$'TTBB','ABCD''$", "error -2147024809"},
    };
    for (const auto &[text, result] : all_set_up) EXPECT_EQ(Expanded(text), result) << text;
    table_host.result = 5;
    host.result = E_UNEXPECTED;
    EXPECT_EQ(Expanded("$'TTBB','ABCD'$"), "error 5");
    EXPECT_EQ(Expanded("&phone&"), "error " + std::to_string(E_UNEXPECTED));

    CHashTable uninitialised;
    tokenizer.Use_Variable_Table(&uninitialised);
    char result[8] = "xxxxxxx";
    EXPECT_THROW(tokenizer.Tokenize("text ^NAME^", result, 8), int);
    EXPECT_EQ(std::string(result, 8), std::string(8, 0));
    EXPECT_TRUE(tokenizer.Tokenize("abc", nullptr, 0) && tokenizer.Tokenize("abc", result, -1));
}

TEST_F(Templates, KeepTheirLimits) {
    Set_Up();
    for (const std::size_t length : {255u, 256u, 257u}) {
        const std::string name(length, 'N');
        if (length <= 255) Define(variables, name.c_str(), "<" + std::to_string(length) + ">");
        const std::string behind =
            length <= 255 ? "." : name.substr(std::min<std::size_t>(length, 256)) + "^.";
        const std::string text = "^" + name + "^.";
        // At 256 the byte behind the 255th ends the name, and the closing sigil opens a token without an end.
        EXPECT_EQ(Expanded(text), length <= 255 ? "<" + std::to_string(length) + ">."
                                                : "<255>" + behind.substr(0, behind.find('^')))
            << length;
        EXPECT_EQ(Expanded("^" + name.substr(0, 255)), "") << "ends with the text";
    }
    for (const std::size_t length : {1023u, 1024u, 1025u}) {
        const std::string value(length, 'v');
        Define(variables, ("V" + std::to_string(length)).c_str(), value);
        host.answer = table_host.answer = value;
        const std::string kept = value.substr(0, 1024) + ".";
        EXPECT_EQ(Expanded("^V" + std::to_string(length) + "^."), kept);
        EXPECT_EQ(Expanded("&phone&."), kept);
        EXPECT_EQ(Expanded("$'TTBB','ABCD'$."), kept);
    }
    for (const std::size_t size : {1u, 7u, 8u}) {
        std::string result(10, 'x');
        EXPECT_TRUE(tokenizer.Tokenize("12^NAME^67", result.data(), static_cast<int>(size)));
        EXPECT_EQ(result, std::string("12Ann67\0\0", 9).substr(0, size) + std::string(10 - size, 'x'));
    }
    for (const std::size_t length :
         {15u, 16u, 17u, 2047u, 2048u, 2049u, 5000u}) { // blocks and the first buffer
        const std::string text(length, 't');
        EXPECT_EQ(Expanded(text + "^NAME^" + text.substr(0, 16) + "%%"),
                  text + "Ann" + text.substr(0, 16) + "%");
    }
}

TEST_F(Templates, StandDamage) {
    Set_Up();
    const std::string good = "Dear ^name^, 10%% of %TEMP%: $'TTBB','ABCD'$ or &phone&, <NAME> <VERSION>";
    EXPECT_EQ(Expanded(good), "Dear Ann, 10% of C:\\WINDOWS\\TEMP\\: table:ABCD or host:PHON, Dialler 3");
    For_Each_Damage(good, [&](const std::string &text) { Expanded(text); });
}

TEST_F(Templates, HoldWhatTheyAreGiven) {
    Host other("other:");
    {
        Tokenizer user;
        user.Use_Binding_Host(&host);
        user.Use_Binding_Host(&host);
        EXPECT_EQ(host.references, 2);
        user.Use_Binding_Host(&other);
        user.Add_Binding_Table(1, &host);
        user.Add_Binding_Table(1, &other);
        user.Add_Binding_Table(2, &other);
        user.Add_Binding_Table(3, nullptr);
        EXPECT_EQ(host.references, 2);
        EXPECT_EQ(other.references, 4);
        IBindingHostInterface *found = nullptr;
        for (const auto &[table, expected] :
             std::vector<std::pair<long, Host *>>{{1, &host}, {2, &other}, {-1, &host}}) {
            EXPECT_EQ(user.Get_Binding_Interface(table, &found), 0);
            EXPECT_EQ(found, expected);
        }
        EXPECT_EQ(user.Get_Binding_Interface(3, &found), -8314);
        EXPECT_EQ(other.references, 4) << "no reference is added";
    }
    machine.Write("drive_c/Scripts/phone.def", "#define phone 'PHON'\r\n#define cut 'P");
    TestKey("Software\\Dunmerit Software\\Kelmara", HKEY_LOCAL_MACHINE).Set("Scripts", "C:\\Scripts");
    tokenizer.Use_Binding_Host(&host);
    for (int round = 0; round < 2; ++round) EXPECT_EQ(tokenizer.Use_Define_File("phone.def"), 0);
    EXPECT_EQ(Expanded("&phone&"), "host:PHON");
    EXPECT_EQ(tokenizer.Use_Define_File("missing.def"), 2);
    EXPECT_THROW(Expanded("&phone&"), int);
    {
        const FailingMemory failing(1);
        EXPECT_EQ(tokenizer.Use_Define_File("phone.def"), E_OUTOFMEMORY);
    }
    EXPECT_EQ(Expanded("&phone&"), "error -2147024809") << "no table";
    EXPECT_EQ(tokenizer.Use_Define_File("phone.def"), 0);
    tokenizer.Use_Token_Table(nullptr);
}

TEST_F(Templates, ReleaseEverythingWhereMemoryEnds) {
    Set_Up();
    const std::string text =
        std::string(2040, 't') + "^NAME^" + std::string(2040, 't') + "&phone&%%%TEMP%<NAME>";
    int failures = 0;
    for (long nth = 1;; ++nth) {
        const NoLeak no_leak;
        const FailingMemory failing(nth);
        const std::string result = Expanded(text);
        if (failing.Refused() == 0) break;
        EXPECT_EQ(result, "error " + std::to_string(E_OUTOFMEMORY));
        ++failures;
    }
    EXPECT_EQ(failures, 3) << "the first buffer, and two times more of it";
    const FailingMemory failing(1);
    tokenizer.Add_Binding_Table(7, &host);
    IBindingHostInterface *found = nullptr;
    EXPECT_EQ(tokenizer.Get_Binding_Interface(7, &found), -8314);
    EXPECT_EQ(host.references, 2);
}

} // namespace
