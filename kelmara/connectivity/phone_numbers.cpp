#include <kelmara/connectivity/phone_numbers.h>

#include <kelmara/foundation/pattern_string.h>

#include <platform/errors.h>

#include <cstring>

namespace {

constexpr int Most_Of_Field = 255; // bytes, terminator included

// The output stays as it is unless there is a field.
bool Take_Field(CPatternString &number, const char *pattern, char *out) {
    char field[256];
    const int length = number.Next(pattern, field, Most_Of_Field);
    if (length == 0) return false;
    if (out)
        std::memcpy(out, field,
                    static_cast<std::size_t>(length < Most_Of_Field ? length + 1 : Most_Of_Field));
    return true;
}

} // namespace

long Parse_Canonical_Number(const char *number, char *country, char *area, char *exchange, char *line) try {
    if (!number || *number != '+') return E_INVALIDARG;
    CPatternString rest(number + 1);
    rest.Skip("^*("); // no option letter: moves nothing
    if (!rest.More()) return E_UNEXPECTED;
    if (!Take_Field(rest, "^*W|T(", country)) return E_UNEXPECTED;
    rest.Skip("^>W|T(");
    if (!Take_Field(rest, "^*T)", area)) return E_UNEXPECTED;
    rest.Skip("^>W|T)");
    if (!Take_Field(rest, "^*T-|W", exchange)) return E_UNEXPECTED;
    rest.Skip("^>W|T-");
    if (!Take_Field(rest, "^*0|W", line)) return E_UNEXPECTED;
    return 0;
} catch (...) {
    return E_INVALIDARG;
}
