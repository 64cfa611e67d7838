#pragma once
// A class that another program offers, as a factory here.

#include <platform/com.h>

/// The factory of the first program that offers the class: REGDB_E_CLASSNOTREG when none does, E_NOINTERFACE
/// for anything but a factory. May throw std::bad_alloc.
HRESULT Get_Remote_Class_Object(REFCLSID clsid, REFIID iid, void **out);
