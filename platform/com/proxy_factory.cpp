#include <platform/com/proxy_factory.h>

#include <platform/com/class_keys.h>
#include <platform/com/class_modules.h>

namespace {

// False for what is no class.
bool Read_Class(const std::string &text, CLSID &clsid) {
    const std::basic_string<WCHAR> wide(text.begin(), text.end());
    return !text.empty() && CLSIDFromString(wide.c_str(), &clsid) == S_OK;
}

} // namespace

HRESULT Find_Proxy_Factory(REFIID iid, Reference<IPSFactoryBuffer> &factory) {
    CLSID clsid;
    if (!Read_Class(Default_Value_Of("Interface\\" + Text_Of(iid) + "\\ProxyStubClsid32"), clsid))
        return E_NOINTERFACE;
    const HRESULT result = Get_Module_Class_Object(clsid, IID_IPSFactoryBuffer, factory.Fill_Any());
    if (result < 0) (void)factory.Give(); // a module that failed has handed out nothing
    return result >= 0 && !factory ? E_UNEXPECTED : result;
}
