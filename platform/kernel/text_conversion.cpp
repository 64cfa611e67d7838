#include <platform/kernel.h>

#include <platform/kernel/code_page.h>

#include <cstring>

namespace {

constexpr UINT Default_Code_Page = 1252;

std::size_t Text_Length(const char *text) {
    return std::strlen(text);
}

std::size_t Text_Length(const WCHAR *text) {
    const WCHAR *end = text;
    while (*end) ++end;
    return static_cast<std::size_t>(end - text);
}

int Fail(long error) {
    SetLastError(static_cast<DWORD>(error));
    return 0;
}

// A code of errors.h for what is wrong with the arguments alone.
long Error_In_Arguments(UINT code_page, DWORD flags, const void *text, int length, const void *out,
                        int size) {
    if (code_page != CP_ACP && code_page != Default_Code_Page) return ERROR_INVALID_PARAMETER;
    if (!text || length == 0 || length < -1 || size < 0) return ERROR_INVALID_PARAMETER;
    if (size > 0 && (!out || out == text)) return ERROR_INVALID_PARAMETER;
    return flags == 0 ? NO_ERROR : ERROR_INVALID_FLAGS;
}

// Character by character, since each takes exactly one in the result.
template <class From, class To, class Convert>
int Convert_Text(const From *text, int length, To *out, int size, Convert convert) {
    if (length < 0) length = static_cast<int>(Text_Length(text)) + 1;
    if (size > 0 && size < length) return Fail(ERROR_INSUFFICIENT_BUFFER);
    for (int i = 0; i < length; ++i) {
        const To converted = convert(text[i]);
        if (size > 0) out[i] = converted;
    }
    return length;
}

} // namespace

extern "C" {

int WideCharToMultiByte(UINT code_page, DWORD flags, const WCHAR *text, int length, LPSTR out, int size,
                        LPCSTR replacement, BOOL *replaced) {
    const long error = Error_In_Arguments(code_page, flags, text, length, out, size);
    if (error != NO_ERROR) return Fail(error);
    bool any_missing = false;
    const int result = Convert_Text(text, length, out, size, [&](WCHAR unit) {
        bool missing = false;
        const auto byte = static_cast<char>(Ansi_Of_Wide(unit, &missing));
        any_missing |= missing;
        return missing && replacement ? *replacement : byte;
    });
    if (replaced && result != 0) *replaced = any_missing;
    return result;
}

int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR text, int length, WCHAR *out, int size) {
    const long error = Error_In_Arguments(code_page, flags, text, length, out, size);
    if (error != NO_ERROR) return Fail(error);
    return Convert_Text(text, length, out, size,
                        [](char byte) { return Wide_Of_Ansi(static_cast<unsigned char>(byte)); });
}
}
