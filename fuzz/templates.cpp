// Templates: names and values first, then the template, expanded to results of many sizes.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/tokenizer.h>

#include <cstring>

namespace {

class Fields final : public IBindingHostInterface {
  public:
    long QueryInterface(const GUID &, void **) override { return E_NOINTERFACE; }
    unsigned long AddRef() override { return 1; }
    unsigned long Release() override { return 1; }
    long Get_Field_Value(long field, char *buffer, long size) override {
        if (field % 5 == 0) return E_NOTIMPL;
        std::memset(buffer, '&', static_cast<std::size_t>(size)); // no terminator
        return 0;
    }
};

class Tokenizer : public CTokenizer {
  public:
    using CTokenizer::Get_Table_Field_Pair;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const long result_size = static_cast<long>(input.Byte()) * 8;
    CHashTable variables, codes;
    variables.Initialize(4);
    codes.Initialize(4);
    for (unsigned left = input.Byte() % 8; left > 0; --left) {
        const std::string name = input.Text(), value = input.Text();
        variables.Add_Volatile(name.c_str(), value.c_str(), static_cast<long>(value.size() + 1));
        codes.Add_Volatile(name.c_str(), value.c_str(), static_cast<long>(value.size()));
    }
    Fields fields;
    ComponentDescriptor component = {{}, "Component", 0x4B4D4350, 0x00010002};
    Tokenizer tokenizer;
    tokenizer.Use_Variable_Table(&variables);
    tokenizer.Use_Token_Table(&codes);
    tokenizer.Use_Binding_Host(&fields);
    tokenizer.Use_Component_Desc(&component);
    tokenizer.Add_Binding_Table(0x54455354, &fields);
    const std::string text = input.Text();
    const ExactBytes shown(text + '\0'), result(std::string(static_cast<std::size_t>(result_size), 'x'));
    const bool done = tokenizer.Tokenize(shown.Get(), result.Get(), result.Size());
    if (!done && result_size > 0) REQUIRE(*result.Get() == 0);
    long table, field;
    tokenizer.Get_Table_Field_Pair(shown.Get(), &table, &field);
    return 0;
}
