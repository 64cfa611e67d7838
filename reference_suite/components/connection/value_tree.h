#pragma once
// A tree of values: items with a code, a text and items of their own. The tree itself is the item above all,
// without code and text. An item lives as long as somebody holds it, also when the tree has gone.

#include <reference_suite/components/component_object.h>
#include <reference_suite/components/value_filling.h>

#include <kelmara/containers/list.h>
#include <kelmara/foundation/safe_str.h>

class ValueItem final
    : public ComponentObject<OfferUnnamed<IComplexValueInterface>,
                             Offer<IComplexValueFillingInterface, IID_IComplexValueFillingInterface>> {
  public:
    /// An empty tree with one reference; null when there is no memory, for which it may also throw.
    static ValueItem *Make_Tree() { return new ValueItem(0, "", 0); }

    char *Get_Text() override { return m_Text; }
    /// The first item of that code in the order of the tree: an item, what is below it, the next one.
    IComplexValueInterface *Find_Item(unsigned long code, long zero) override;
    long Add_Item(unsigned long code, const char *text, IComplexValueInterface **out) override;

  private:
    ValueItem(unsigned long code, const char *text, int level) : m_Code(code), m_Text(text), m_Level(level) {}
    ~ValueItem() override;

    ValueItem *Find(unsigned long code);

    unsigned long m_Code;
    CSafeStr m_Text;
    int m_Level;
    CDSList m_Items; // ValueItem, a reference each
};
