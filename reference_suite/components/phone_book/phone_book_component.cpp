#include <reference_suite/components/phone_book/phone_book_component.h>

#include <reference_suite/components/component_store.h>

#include <cstring>

namespace {

bool Is_Digit(char character) {
    return character >= '0' && character <= '9';
}

// "+1 (206) 555-0100"
bool Is_Canonical(const char *number) {
    return *number == '+' && Is_Digit(number[1]) && !number[1 + std::strspn(number + 1, "0123456789 ()-.")];
}

bool Have_Same_Digits(const char *one, const char *other) {
    for (;; ++one, ++other) {
        while (*one && !Is_Digit(*one)) ++one;
        while (*other && !Is_Digit(*other)) ++other;
        if (*one != *other) return false;
        if (!*one) return true;
    }
}

bool Stands_In(const StoredLines &book, const char *number) {
    for (const char *line = book.Next(nullptr); line; line = book.Next(line)) {
        const char *const entry = std::strchr(line, '=');
        if (entry && Is_Canonical(entry + 1) && Have_Same_Digits(entry + 1, number)) return true;
    }
    return false;
}

long Test_Number(const char *name, const char *number) {
    const std::string key = Component_Key(Component_Phonebook, name);
    if (key.empty() || !Is_Canonical(number)) return E_INVALIDARG;
    StoredLines book;
    if (const long result = book.Load(key.c_str(), Entries_Value)) return result;
    return Stands_In(book, number) ? 0 : ERROR_NOT_FOUND;
}

} // namespace

long PhonebookComponent::Run_Component_Command(long command, char *name, char *text, long, long) {
    if (command != Command_Test_Number) return E_NOTIMPL;
    if (!name || !text) return E_INVALIDARG;
    return Within_Memory_Of_Suite([&] { return Test_Number(name, text); });
}
