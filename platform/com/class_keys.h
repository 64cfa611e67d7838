#pragma once
// What HKEY_CLASSES_ROOT says of classes and interfaces.

#include <platform/com.h>

#include <string>

/// "{DC495940-FBB2-11D1-9960-00A0244EE2F7}".
std::string Text_Of(GUID const &guid);

/// The default value of a key below HKEY_CLASSES_ROOT; empty when there is none. May throw std::bad_alloc.
std::string Default_Value_Of(const std::string &key);

/// The module that offers a class; empty for a class that none does. May throw std::bad_alloc.
std::string Module_Of_Class(REFCLSID clsid);

/// 0x80070000 with a code of errors.h; E_OUTOFMEMORY for want of memory.
constexpr HRESULT Result_Of(unsigned long error) {
    if (error == ERROR_NOT_ENOUGH_MEMORY) return E_OUTOFMEMORY;
    return static_cast<HRESULT>(0x80070000u | (error & 0xFFFF));
}

/// What a step answers; E_OUTOFMEMORY when memory runs out in it.
template <class Step>
HRESULT Result_Within_Memory(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc &) {
        return E_OUTOFMEMORY;
    }
}
