#include <tests/faults/operations/operation.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/define_file.h>
#include <kelmara/content/sections.h>
#include <kelmara/content/tokenizer.h>

#include <cstring>

namespace {

char Name[] = "name", Value[] =
                          "a value that is too long to stand beside its name in the record of its item, "
                          "because there is so much of it that it needs a block of its own";

struct Section {
    std::string State() { return std::to_string(section.Get_Item_Count()); }
    CSectionEntry section{"s"};
};

struct Sections {
    ~Sections() { Unload_Sections(&list); }
    std::string State() {
        std::string state;
        for (long i = 0; i < list.Entries(0); ++i) {
            auto *const section = static_cast<CSectionEntry *>(list.GetEntry(i, 0));
            char name[256], *item = nullptr, *value = nullptr;
            section->Get_Section_Name(name), state += name + std::string("=|");
            for (int of = 0; of < section->Get_Item_Count(); ++of) {
                section->Get_Next_Item(of, &item, &value, nullptr);
                state += item + std::string("=") + value + "|";
            }
        }
        return state;
    }
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
};

struct Defines {
    std::string State() { return Found("ONE") + Found("TWO"); }
    std::string Found(const char *name) try {
        char *text = nullptr;
        return table.Find(name, &text, nullptr) == 0 ? name + std::string("=") + text + "|" : "";
    } catch (int) {
        return ""; // no table yet
    }
    CHashTable table;
};

struct Expanding {
    Expanding() {
        variables.Initialize(2);
        variables.Add("NAME", Name, 4);
        tokenizer.Use_Variable_Table(&variables);
    }
    std::string State() {
        char known[300] = {};
        tokenizer.Tokenize("^ONE^|^TWO^|", known, sizeof known);
        return known + std::string(result) + std::to_string(host.references);
    }
    Host host;
    CHashTable variables;
    CTokenizer tokenizer;
    char result[300] = {};
};

const std::vector<Outcome> No_Memory_Or_File = {No_Memory, Gives(2)};

} // namespace

Operations Content_Operations() {
    return {
        Row<Made<CSectionEntry>>("section", 1, Throws, [](auto &of) { return of.thing.emplace("name"), 1; }),
        Row<Section>("Add_Item", 0, {No_Memory},
                     [](auto &of) { return of.section.Add_Item(Name, Value, sizeof Value); }),
        // "Sections and items before the fault stay in the list"
        Row<Sections>(
            "Load_Sections", 0, {No_Memory, Minus_One, Thrown}, Once(Partly),
            [](auto &of) { return Load_Sections(Sections_Text, sizeof Sections_Text - 1, &of.list, true); }),
        // an entry that finds no memory is one that Add leaves out
        Row<Defines>("Tokenize_Define_File", 0, No_Memory_Or_File, Partly_Untold,
                     [](auto &of) { return Tokenize_Define_File("c:\\texts.def", &of.table); }),
        Row<Made<CTokenizer>>("tokenizer", 1, Throws, [](auto &of) { return of.thing.emplace(), 1; }),
        Row<Expanding>("Use_Define_File", 0, No_Memory_Or_File, Partly_Untold,
                       [](auto &of) { return of.tokenizer.Use_Define_File("c:\\texts.def"); }),
        Row<Expanding>("Add_Binding_Table", 0, {}, Either,
                       [](auto &of) { of.tokenizer.Add_Binding_Table(0x54545454, &of.host); }),
        Row<Expanding>("Tokenize", 1, {Nothing},
                       [](auto &of) { return of.tokenizer.Tokenize("Dear ^NAME^, %%", of.result, 300); }),
    };
}
