#include <reference_suite/components/connection/value_tree.h>

#include <kelmara/containers/iterator.h>

ValueItem::~ValueItem() {
    while (m_Items.Entries(0) > 0) static_cast<ValueItem *>(m_Items.Pop(0))->Release();
}

ValueItem *ValueItem::Find(unsigned long code) {
    CIterator walk;
    for (void *entry = walk.Iterate(&m_Items); walk.More(); entry = walk.Next()) {
        auto *const item = static_cast<ValueItem *>(entry);
        if (item->m_Code == code) return item;
        if (ValueItem *const below = item->Find(code)) return below;
    }
    return nullptr;
}

IComplexValueInterface *ValueItem::Find_Item(unsigned long code, long) {
    ValueItem *const found = Find(code);
    if (found) found->AddRef();
    return found;
}

long ValueItem::Add_Item(unsigned long code, const char *text, IComplexValueInterface **out) {
    if (out) *out = nullptr;
    if (!text || m_Level == Deepest_Value_Level) return E_INVALIDARG;
    ValueItem *item = nullptr;
    const long result = Within_Memory_Of_Suite([&]() -> long {
        item = new ValueItem(code, text, m_Level + 1);
        return item && m_Items.Add(item, 0) ? 0 : E_OUTOFMEMORY;
    });
    if (result != 0) {
        if (item) item->Release();
        return result;
    }
    if (out) item->AddRef(), *out = item;
    return 0;
}
