#include <reference_suite/programs/road/sections_and_templates.h>

#include <reference_suite/installer/install_suite.h>
#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/registry_and_files.h>

#include <kelmara/kelmara.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

namespace {

constexpr int Scripts_Folder = 5;
constexpr long Services = 0x53455256, Provider = 0x50524F56, Number = 0x4E554D42; // SERV, PROV, NUMB
constexpr long Name = 0x4E414D45, Town = 0x544F574E;                              // NAME, TOWN

/// A component's fields, kept by their codes. It lives on the stack: the references only must come out even.
class Fields final : public IBindingHostInterface {
  public:
    explicit Fields(std::map<long, std::string> texts) : m_Texts(std::move(texts)) {}
    ~Fields() { Require(m_References == 0, "every reference to a component came back"); }

    long QueryInterface(const GUID &, void **object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    unsigned long AddRef() override { return ++m_References; }
    unsigned long Release() override { return --m_References; }
    long Get_Field_Value(long field, char *buffer, long size) override {
        const auto found = m_Texts.find(field);
        if (found == m_Texts.end()) return ERROR_NOT_FOUND;
        const std::string &text = found->second;
        if (static_cast<long>(text.size()) >= size) return ERROR_MORE_DATA;
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        return 0;
    }

  private:
    std::map<long, std::string> m_Texts;
    unsigned long m_References = 0;
};

class Sections {
  public:
    explicit Sections(const std::string &text) {
        Require(Load_Sections(text.data(), static_cast<long>(text.size()), &m_List, true) == 0,
                "the section file can be read");
    }
    ~Sections() { Unload_Sections(&m_List); }
    Sections(const Sections &) = delete;
    Sections &operator=(const Sections &) = delete;

    long Count() { return m_List.Entries(0); }
    std::string Item(long section, std::string name) {
        auto *const entry = static_cast<CSectionEntry *>(m_List.GetEntry(section, 0));
        const char *const value = entry ? entry->Get_Item_Data(name.data(), nullptr) : nullptr;
        Require(value != nullptr, "the section has the item");
        return value;
    }

  private:
    CDSList m_List;
};

void Tell_Lines(const std::string &text) {
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t end = std::min(text.find("\r\n", from), text.size());
        Tell("  %s", text.substr(from, end - from).c_str());
        from = end + 2;
    }
}

} // namespace

void Write_A_Welcome() {
    Begin_Chapter("A text that is filled in");
    Sections services(Content_Of(Folder(Scripts_Folder) + "services.sct"));
    Require(services.Count() == 2, "there are two services");
    const std::string provider = services.Item(0, "provider"), number = services.Item(0, "NUMBER");
    Tell("A section file names %ld services, the first of \"%s\" under \"%s\".", services.Count(),
         provider.c_str(), number.c_str());

    Fields service({{Provider, provider}, {Number, number}});
    Fields customer({{Name, "Ann Example"}, {Town, "Seattle"}});
    CHashTable variables;
    char greeting[] = "Welcome,";
    Require(variables.Initialize(1) == 0, "a table can be had");
    variables.Add("GREETING", greeting, sizeof greeting);
    ComponentDescriptor road = {{}, "The road", 0x524F4144, 1};

    CTokenizer tokenizer;
    Require(tokenizer.Use_Define_File("customer.def") == 0, "the define file is among the includes");
    tokenizer.Use_Binding_Host(&customer);
    tokenizer.Add_Binding_Table(Services, &service);
    tokenizer.Use_Variable_Table(&variables);
    tokenizer.Use_Component_Desc(&road);
    const std::string letter = Content_Of(Folder(Scripts_Folder) + "welcome.tpl");
    char result[1024];
    Require(tokenizer.Tokenize(letter.c_str(), result, sizeof result), "the template can be expanded");
    Require(std::strstr(result, "Welcome, Ann Example of Seattle,") != nullptr &&
                std::strstr(result, Suite_Root) != nullptr && std::strstr(result, "(ROAD)") != nullptr,
            "every token has its value");
    Tell("A template, with the names of its fields from a define file:");
    Tell_Lines(letter);
    Tell("reads, with values from components, the registry and the program's own table:");
    Tell_Lines(result);
}
