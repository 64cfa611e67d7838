#include <reference_suite/components/location/location_component.h>

long LocationComponent::Open_Component(ComponentLocator *locator, long zero) {
    const long result = ValuesObject::Open_Component(locator, zero);
    if (result == 0) m_Options.Discard_All();
    return result;
}

long LocationComponent::Save_Options(unsigned long *token) {
    if (!token) return E_POINTER;
    *token = 0;
    return With_Location([&] { return m_Options.Save(Key(), *token); });
}

long LocationComponent::Apply_Options(bool second, bool first, char *area_code, char *exchange) {
    if (!area_code || !exchange) return E_INVALIDARG;
    return With_Location([&] { return m_Options.Apply(Key(), {first, second}, area_code, exchange); });
}

long LocationComponent::Restore_Options(unsigned long token) {
    return With_Location([&] { return m_Options.Restore(Key(), token); });
}

long LocationComponent::Discard_Saved_Options(unsigned long token) {
    return With_Location([&] { return m_Options.Discard(token); });
}
