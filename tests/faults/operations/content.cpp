#include <tests/faults/operations/operation.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/define_file.h>
#include <kelmara/content/sections.h>
#include <kelmara/content/tokenizer.h>

#include <cstring>
#include <optional>

namespace {

char Name[] = "name", Value[] =
                          "a value that is too long to stand beside its name in the record of its item, "
                          "because there is so much of it that it needs a block of its own";

struct Section {
    CSectionEntry section{"s"};
};

std::string Items(Section &of) {
    return std::to_string(of.section.Get_Item_Count());
}

struct Sections {
    ~Sections() { Unload_Sections(&list); }
    CDSList list;
};

constexpr char Sections_Text[] = "[one]\na=1\nb=2\n[two]\nc=3\n";

class Host final : public IBindingHostInterface {
  public:
    long QueryInterface(const GUID &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return ++references; }
    unsigned long Release() override { return --references; }
    long Get_Field_Value(long, char *buffer, long) override { return std::strcpy(buffer, "field"), 0; }
    unsigned long references = 0;
} host;

struct Expanding {
    Expanding() {
        variables.Initialize(2);
        variables.Add("NAME", Name, 4);
        tokenizer.Use_Variable_Table(&variables);
    }
    CHashTable variables;
    CTokenizer tokenizer;
    char result[300] = {};
};

const std::vector<Outcome> No_Memory_Or_File = {Gives_No_Memory, Gives(2)};

} // namespace

Operations Content_Operations() {
    const auto expanding = [] { return std::make_shared<Expanding>(); };
    return {
        Row(
            "section", 1, {Throws_Minus_One, Throws_No_Memory},
            [] { return std::make_shared<std::optional<CSectionEntry>>(); },
            [](std::optional<CSectionEntry> &section) { return section.emplace("name"), 1; },
            [](std::optional<CSectionEntry> &section) { return section ? "made" : "none"; }),
        Row(
            "Add_Item", 0, {Gives_No_Memory}, [] { return std::make_shared<Section>(); },
            [](Section &of) { return of.section.Add_Item(Name, Value, sizeof Value); }, Items),
        // "Sections and items before the fault stay in the list"
        Row(
            "Load_Sections", 0, {Gives_No_Memory, Throws_Minus_One, Throws_No_Memory},
            [] { return std::make_shared<Sections>(); },
            [](Sections &of) {
                return Load_Sections(Sections_Text, sizeof Sections_Text - 1, &of.list, true);
            },
            [](Sections &of) { return std::to_string(of.list.Entries(0)); }, Leaves::Partly),
        Row(
            "Tokenize_Define_File", 0, No_Memory_Or_File, [] { return std::make_shared<CHashTable>(); },
            [](CHashTable &table) { return Tokenize_Define_File("c:\\texts.def", &table); },
            [](CHashTable &table) { return std::to_string(table.Get_Num_Entries()); },
            Leaves::Partly), // an entry that finds no memory is one that Add leaves out
        Row(
            "tokenizer", 1, {Throws_Minus_One, Throws_No_Memory},
            [] { return std::make_shared<std::optional<CTokenizer>>(); },
            [](std::optional<CTokenizer> &made) { return made.emplace(), 1; },
            [](std::optional<CTokenizer> &made) { return made ? "made" : "none"; }),
        Row(
            "Use_Define_File", 0, No_Memory_Or_File, expanding,
            [](Expanding &of) { return of.tokenizer.Use_Define_File("c:\\texts.def"); },
            [](Expanding &of) { return of.result; }, Leaves::Partly),
        Row(
            "Add_Binding_Table", 0, {}, [=] { return host.references = 0, expanding(); },
            [](Expanding &of) { return of.tokenizer.Add_Binding_Table(0x54545454, &host), 0; },
            [](Expanding &) { return std::to_string(host.references); }, Leaves::Either),
        Row(
            "Tokenize", 1, {Gives_Nothing}, expanding,
            [](Expanding &of) { return of.tokenizer.Tokenize("Dear ^NAME^, %%", of.result, 300); },
            [](Expanding &of) { return of.result; }),
    };
}
