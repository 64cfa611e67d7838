#pragma once
// The class that tests/modules/com_class.cpp offers, and no other module.

#include <platform/com.h>

inline constexpr GUID CLSID_TestCounter = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x01}};
inline constexpr GUID IID_ITestCounter = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x02}};

class ITestCounter : public IUnknown {
  public:
    virtual long Next() = 0;

  protected:
    ~ITestCounter() = default;
};
