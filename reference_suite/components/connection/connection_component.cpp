#include <reference_suite/components/connection/connection_component.h>

#include <reference_suite/components/connection/value_tree.h>

long ConnectionComponent::Create_Tree(IComplexValueInterface **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Within_Memory_Of_Suite([&]() -> long {
        *out = ValueItem::Make_Tree();
        return *out ? 0 : E_OUTOFMEMORY;
    });
}
