#include <reference_suite/components/stored_component.h>

#include <reference_suite/components/component_store.h>

#include <cstring>

long StoredComponent::Open(const ComponentLocator &locator) {
    const std::size_t length = strnlen(locator.name, sizeof locator.name);
    if (length == sizeof locator.name || locator.kind != m_Kind) return E_INVALIDARG;
    return Open(locator.name);
}

long StoredComponent::Open(const char *name) {
    std::string key = Component_Key(m_Kind, name);
    if (key.empty()) return E_INVALIDARG;
    if (!Is_Component_Stored(m_Kind, name)) return ERROR_FILE_NOT_FOUND;
    m_Lock.Give_Up();
    m_Key.swap(key);
    return 0;
}

long StoredComponent::Load() {
    return m_Options.Load(m_Key.c_str(), Options_Value);
}

long StoredComponent::Set_Lock(bool on) {
    if (m_Key.empty() || (!on && !m_Lock.Is_Held())) return E_UNEXPECTED;
    if (!on) return m_Lock.Give_Up(), 0;
    if (m_Lock.Is_Held()) return 0;
    if (const long result = m_Lock.Take(m_Key)) return result;
    const long result = Load();
    if (result != 0) m_Lock.Give_Up();
    return result;
}

// What a connection's record is given leaves room for the terminator, so that nothing is kept that could
// never be read there.
long StoredComponent::Longest_Text(unsigned long code) {
    const bool goes_into_record = code == Option_Account_ID.code || code == Option_Password.code;
    return goes_into_record ? Option_Account_ID_To_Connect.size - 1 : Longest_Option;
}

long StoredComponent::Commit() {
    return m_Lock.Is_Held() ? m_Options.Store(m_Key.c_str(), Options_Value) : E_UNEXPECTED;
}

long StoredComponent::Set(unsigned long code, const char *data, long length) {
    if (!data || length < 1) return E_INVALIDARG;
    const std::string text(data, strnlen(data, static_cast<std::size_t>(length)));
    if (text.size() > static_cast<std::size_t>(Longest_Text(code))) return E_INVALIDARG;
    if (!m_Lock.Is_Held()) return E_UNEXPECTED;
    return m_Options.Set(Stored_Value_Name(code).c_str(), text.c_str());
}

long StoredComponent::Get(unsigned long code, char *buffer, long *size) {
    if (!buffer || !size || *size < 1) return E_INVALIDARG;
    const long room = *size;
    *buffer = 0;
    *size = 1;
    if (m_Key.empty()) return E_UNEXPECTED;
    if (!m_Lock.Is_Held()) {
        if (const long result = Load()) return result;
    }
    const char *const text = m_Options.Find(Stored_Value_Name(code).c_str());
    if (!text) return ERROR_FILE_NOT_FOUND;
    *size = static_cast<long>(std::strlen(text)) + 1;
    if (*size > room) return ERROR_MORE_DATA;
    std::memcpy(buffer, text, static_cast<std::size_t>(*size));
    return 0;
}
