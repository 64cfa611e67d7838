// Texts: the library's string, tokens, patterns and conversions.
#include <kelmara/kelmara.h>

#include <cstdio>

int main() {
    CSafeStr name("Kelmara"); // up to 511 characters without an allocation
    name += " ";
    name += 32;
    name.Quote_Wrap();
    std::printf("%s has %d characters\n", static_cast<char *>(name), name.Length());

    char list[] = "red, green ,blue"; // cut in place
    CTokenString colours(list, ',');
    colours.Strip_Spaces(true);
    while (char *colour = colours.Next_Token(0)) std::printf("[%s]\n", colour);

    CPatternString number("(206) 555-1212");
    char area[8];
    number.Skip("^>T(");                    // past the bracket
    number.Next("^*T)", area, sizeof area); // up to the next one
    std::printf("area code %s\n", area);

    char code[5];
    Char_Code_To_String(String_To_Char_Code("MODD"), code);
    std::printf("%08lx is %s\n", static_cast<unsigned long>(String_To_Char_Code("MODD")), code);
    return strcmp_ncs("Dialer", "DIALER");
}
