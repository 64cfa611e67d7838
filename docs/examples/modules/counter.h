#pragma once
// The interface of the counter, for the component and for whoever uses it.

#include <platform/com.h>

inline constexpr GUID CLSID_Counter = {0x5E6C01A0, 0x3D11, 0x4B7A, {0x90, 1, 2, 3, 4, 5, 6, 7}};
inline constexpr GUID IID_ICounter = {0x5E6C01A1, 0x3D11, 0x4B7A, {0x90, 1, 2, 3, 4, 5, 6, 7}};

// Neither the order nor a signature changes once somebody has it.
class ICounter : public IUnknown {
  public:
    virtual long Next() = 0;

  protected:
    ~ICounter() = default;
};
