#include <platform/com.h>

#include <cstdio>

namespace {

constexpr int Text_Length = 38;
constexpr char Shape[] = "{00000000-0000-0000-0000-000000000000}"; // a digit where a 0 is

int Digit(WCHAR character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    return -1;
}

// The 32 digits of a text in this shape. False for any other.
bool Read_Digits(const WCHAR *text, unsigned char *digits) {
    for (int i = 0; i < Text_Length; ++i) {
        if (Shape[i] != '0') {
            if (text[i] != static_cast<WCHAR>(Shape[i])) return false;
            continue;
        }
        const int digit = Digit(text[i]);
        if (digit < 0) return false;
        *digits++ = static_cast<unsigned char>(digit);
    }
    return text[Text_Length] == 0;
}

unsigned long Number(const unsigned char *digits, int count) {
    unsigned long number = 0;
    for (int i = 0; i < count; ++i) number = number << 4 | digits[i];
    return number;
}

} // namespace

extern "C" {

int StringFromGUID2(GUID const &guid, WCHAR *out, int size) {
    if (!out || size <= Text_Length) return 0;
    char text[Text_Length + 1];
    const BYTE *last = guid.Data4;
    std::snprintf(text, sizeof text, "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1,
                  guid.Data2, guid.Data3, last[0], last[1], last[2], last[3], last[4], last[5], last[6],
                  last[7]);
    for (int i = 0; i <= Text_Length; ++i) out[i] = static_cast<unsigned char>(text[i]);
    return Text_Length + 1;
}

HRESULT StringFromCLSID(REFCLSID clsid, WCHAR **out) {
    if (!out) return E_INVALIDARG;
    *out = static_cast<WCHAR *>(CoTaskMemAlloc((Text_Length + 1) * sizeof(WCHAR)));
    if (!*out) return E_OUTOFMEMORY;
    StringFromGUID2(clsid, *out, Text_Length + 1);
    return S_OK;
}

HRESULT CLSIDFromString(const WCHAR *text, CLSID *clsid) {
    if (!clsid) return E_INVALIDARG;
    *clsid = {};
    if (!text) return S_OK;
    unsigned char digits[32];
    if (!Read_Digits(text, digits)) return CO_E_CLASSSTRING;
    clsid->Data1 = Number(digits, 8);
    clsid->Data2 = static_cast<unsigned short>(Number(digits + 8, 4));
    clsid->Data3 = static_cast<unsigned short>(Number(digits + 12, 4));
    for (int i = 0; i < 8; ++i) clsid->Data4[i] = static_cast<unsigned char>(Number(digits + 16 + 2 * i, 2));
    return S_OK;
}
}
