#pragma once
// How a value tree of the connection component is filled: by whoever is given the tree, through the interface
// that the tree and each of its items offer beside the one for reading.

#include <kelmara/connectivity/component_interfaces.h>

inline constexpr GUID IID_IComplexValueFillingInterface = {
    0x3E9D52A4, 0x10B7, 0x4C63, {0x8A, 0x4F, 0x62, 0xD1, 0x0B, 0x93, 0x7E, 0x11}};

/// Items below the tree itself: the first level is 1.
inline constexpr int Deepest_Value_Level = 16;

class IComplexValueFillingInterface : public IUnknown {
  public:
    /// Adds an item with a copy of the text behind those that are there. `out`, if given, gets a reference to
    /// it, null on failure. E_INVALIDARG for null and below an item of the deepest level.
    virtual long Add_Item(unsigned long code, const char *text, IComplexValueInterface **out) = 0;

  protected:
    ~IComplexValueFillingInterface() = default;
};
