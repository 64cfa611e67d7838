#include <reference_suite/components/server_proxy/server_stubs.h>

#include <reference_suite/components/server_proxy/server_slots.h>

#include <reference_suite/components/component_store.h>

#include <algorithm>

namespace {

constexpr long Largest_Setting = Largest_Read_Value + 1; // bytes, with the terminator

HRESULT Read_Setting(IServerSimpleAccessInterface &server, unsigned long code, MessageReader &arguments,
                     MessageWriter &results) {
    long size = std::clamp(arguments.Get(), 1L, Largest_Setting);
    if (!arguments.Is_Whole()) return RPC_E_INVALID_DATA;
    std::string buffer(static_cast<std::size_t>(size), '\0');
    results.Put(server.Read_Setting(code, buffer.data(), &size));
    results.Put(size);
    results.Put_Text(buffer.c_str());
    return S_OK;
}

} // namespace

HRESULT ServerStub::Dispatch(IServerInterface &server, ULONG slot, MessageReader &arguments,
                             MessageWriter &results) {
    if (slot != Slot_Find_Component) return RPC_E_INVALIDMETHOD;
    const long kind = arguments.Get();
    std::string name = arguments.Get_Text();
    if (!arguments.Is_Whole()) return RPC_E_INVALID_DATA;
    ComponentLocator locator = {};
    results.Put(server.Find_Component(kind, name.data(), &locator));
    results.Put_Bytes(&locator, sizeof locator);
    return S_OK;
}

HRESULT ServerSettingsStub::Dispatch(IServerSimpleAccessInterface &server, ULONG slot,
                                     MessageReader &arguments, MessageWriter &results) {
    const auto code = static_cast<unsigned long>(arguments.Get());
    if (slot == Slot_Read_Setting) return Read_Setting(server, code, arguments, results);
    if (slot != Slot_Write_Setting && slot != Slot_Update_Setting) return RPC_E_INVALIDMETHOD;
    std::string text(arguments.Get_Bytes());
    const long zero = slot == Slot_Update_Setting ? arguments.Get() : 0;
    if (!arguments.Is_Whole()) return RPC_E_INVALID_DATA;
    const long size = static_cast<long>(text.size());
    results.Put(slot == Slot_Update_Setting ? server.Update_Setting(code, text.data(), size, zero)
                                            : server.Write_Setting(code, text.data(), size));
    return S_OK;
}
