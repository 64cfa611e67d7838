#pragma once
// The proxy module of an interface, by the registry.

#include <platform/com/reference.h>
#include <platform/com_marshalling.h>

/// E_NOINTERFACE when the registry names none; what Get_Module_Class_Object answers. May throw
/// std::bad_alloc.
HRESULT Find_Proxy_Factory(REFIID iid, Reference<IPSFactoryBuffer> &factory);
