#include <platform/letter_case.h>

#include <platform/kernel/capital_letters.h>

extern "C" DWORD CharUpperBuffA(LPSTR text, DWORD length) {
    for (DWORD i = 0; i < length; ++i)
        text[i] = static_cast<char>(Capital_Of(static_cast<unsigned char>(text[i])));
    return length;
}
