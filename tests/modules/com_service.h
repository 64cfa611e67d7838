#pragma once
// Interfaces of a server in tests, and the class of their proxy module, tests/modules/com_proxy.cpp.

#include <platform/com.h>

inline constexpr GUID CLSID_TestService = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x11}};
inline constexpr GUID CLSID_TestProxy = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x12}};
inline constexpr GUID IID_ITestService = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x13}};
inline constexpr GUID IID_ITestNumber = {
    0x5B0A3A10, 0x77C1, 0x4D0E, {0x91, 0x22, 0x3F, 0x5E, 0x01, 0x6C, 0x20, 0x14}};

class ITestService : public IUnknown {
  public:
    /// Does what a word asks for, to `answer` of `size` bytes.
    virtual long Do(char *word, char *answer, long size) = 0;

  protected:
    ~ITestService() = default;
};

class ITestNumber : public IUnknown {
  public:
    virtual long Number() = 0;

  protected:
    ~ITestNumber() = default;
};
