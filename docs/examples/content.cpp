// A section file is read, and a template is filled in from a table.
#include <kelmara/kelmara.h>

#include <platform/kernel.h>

#include <cstdio>
#include <cstring>

int main() {
    const char services[] = "; what there is\r\n[Dial-up]\r\nProvider = \"Dunmerit Net\"\r\n";
    CDSList sections;
    if (Load_Sections(services, static_cast<long>(std::strlen(services)), &sections, true) != 0) return 1;
    auto *section = static_cast<CSectionEntry *>(sections.GetEntry(0, 0));
    char name[256], key[] = "provider";
    section->Get_Section_Name(name);
    char *const provider = section->Get_Item_Data(key, nullptr);

    CHashTable variables;
    if (variables.Initialize(4) != 0) return 1;
    variables.Add("PROVIDER", provider, static_cast<long>(std::strlen(provider)));

    CTokenizer tokenizer;
    tokenizer.Use_Variable_Table(&variables);
    char text[256];
    if (!tokenizer.Tokenize("^provider^ is 100%% there.", text, sizeof text)) return 1;
    std::printf("%s: %s\n", name, text);

    const bool known = tokenizer.Tokenize("^unknown^", text, sizeof text);
    std::printf("an unknown variable: %d, last error %lu\n", known, GetLastError());
    return static_cast<int>(Unload_Sections(&sections));
}
