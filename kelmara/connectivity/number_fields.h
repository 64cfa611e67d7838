#pragma once
// Inside the library: the fields of a component's telephone number, by way of a value tree that the
// connection component makes and the component fills. The tree is released with the object.

#include <kelmara/connectivity/owned_interface.h>

#include <kelmara/connectivity/component_interfaces.h>

class NumberFields {
  public:
    /// 0, or the code of the step that failed.
    long Read(IComplexComponentInterface *component);
    /// To 256 bytes, cut to what they hold. E_UNEXPECTED, and nothing written, when the item is missing.
    long Get_Area_Code(char *out) const { return Get_Item(Item_Area_Code, out); }
    long Get_Exchange(char *out) const;

  private:
    long Get_Item(unsigned long code, char *out) const;

    // In this order: the tree goes first.
    OwnedInterface<IComplexValueFactoryInterface> m_Factory;
    OwnedInterface<IComplexValueInterface> m_Tree;
};
