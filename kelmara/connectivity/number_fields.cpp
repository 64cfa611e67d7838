#include <kelmara/connectivity/number_fields.h>

#include <cstring>

namespace {

constexpr std::size_t Field_Size = 256;
constexpr std::size_t Plain_Exchange_Length = 3;

void Copy_Cut(char *to, const char *from, std::size_t longest) {
    const std::size_t length = strnlen(from, longest);
    std::memcpy(to, from, length);
    to[length] = 0;
}

} // namespace

long NumberFields::Read(IComplexComponentInterface *component) {
    if (const long result = m_Factory.Create(CLSID_ConnectionComponent, IID_IComplexValueFactoryInterface))
        return result;
    const auto create = [&](void **out) {
        IComplexValueInterface *tree = nullptr;
        const long result = m_Factory->Create_Tree(&tree);
        *out = tree;
        return result;
    };
    if (const long result = m_Tree.Take(create)) return result;
    return component->Fill_Tree(m_Tree.Get());
}

long NumberFields::Get_Item(unsigned long code, char *out) const {
    const OwnedInterface<IComplexValueInterface> item(m_Tree->Find_Item(code, 0));
    if (!item) return E_UNEXPECTED;
    const char *const text = item->Get_Text();
    Copy_Cut(out, text ? text : "", Field_Size - 1);
    return 0;
}

long NumberFields::Get_Exchange(char *out) const {
    char number[Field_Size];
    if (const long result = Get_Item(Item_Phone_Number, number)) return result;
    const std::size_t before_dash = std::strcspn(number, "-");
    const bool divided = before_dash > 0 && number[before_dash] == '-';
    Copy_Cut(out, number, divided ? before_dash : Plain_Exchange_Length);
    return 0;
}
