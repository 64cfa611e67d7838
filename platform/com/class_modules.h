#pragma once
// Classes that modules offer. A module that was loaded for a class stays loaded until it says that nothing of
// it is in use.

#include <platform/com.h>

/// Of the module that the registry names; REGDB_E_CLASSNOTREG when it names none. May throw std::bad_alloc.
HRESULT Get_Module_Class_Object(REFCLSID clsid, REFIID iid, void **out);

void Free_Unused_Class_Modules();
