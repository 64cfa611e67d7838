// Canonical telephone numbers: any text parsed, to outputs of exactly the size that they have.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/connectivity/phone_numbers.h>

#include <platform/errors.h>

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const ExactBytes number(input.Text() + '\0');
    const std::string untouched(255, '\x7f');
    const ExactBytes country(untouched), area(untouched), exchange(untouched), line(untouched);
    const long result =
        Parse_Canonical_Number(number.Get(), country.Get(), area.Get(), exchange.Get(), line.Get());
    REQUIRE(result == 0 || result == E_INVALIDARG || result == E_UNEXPECTED);
    REQUIRE((*number.Get() == '+') == (result != E_INVALIDARG));
    for (const ExactBytes *field : {&country, &area, &exchange, &line}) {
        if (result == 0) REQUIRE(*field->Get() != 0 && std::memchr(field->Get(), 0, 255));
    }
    REQUIRE(Parse_Canonical_Number(number.Get(), nullptr, nullptr, nullptr, nullptr) == result);
    return 0;
}
