#include <kelmara/localization/table_format.h>

#include <platform/kernel.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr long Widest = 2047;  // of a width or precision
constexpr int Most_Words = 64; // of arguments

/// What stands between a percent sign and the letter that ends a conversion.
struct Conversion {
    char flags[8] = {};
    int width = 0;
    int precision = -1; // below 0: none
    int size = 0;       // 1 for each l, -1 for each h
    char letter = 0;    // 0 when there is none that is known
};

int Bounded(long number) {
    return static_cast<int>(std::clamp(number, -Widest, Widest));
}

class Formatter {
  public:
    Formatter(char *out, std::size_t size, va_list arguments) : m_Out(out), m_Left(size - 1) {
        va_copy(m_Arguments, arguments);
        *m_Out = 0;
    }
    ~Formatter() { va_end(m_Arguments); }
    Formatter(const Formatter &) = delete;
    Formatter &operator=(const Formatter &) = delete;

    void Run(const char *format) {
        while (*format) {
            const std::size_t plain = std::strcspn(format, "%");
            Put_Text(format, plain);
            format += plain;
            if (!*format || m_Left == 0) return;
            const char *const behind = Put_Conversion(format);
            if (!behind) return Put_Text(format, std::strlen(format));
            format = behind;
        }
    }

  private:
    void Put_Text(const char *text, std::size_t length) {
        length = std::min(length, m_Left);
        std::memcpy(m_Out, text, length);
        Advance(length);
    }

    void Advance(std::size_t length) {
        m_Out += length;
        m_Left -= length;
        *m_Out = 0;
    }

    // False when the format has asked for more words than anybody gives: it is not followed any further.
    bool Take(int words) {
        m_Words += words;
        return m_Words <= Most_Words;
    }

    // A number in the format, or an argument for an asterisk.
    long Take_Number(const char *&at) {
        if (*at == '*') {
            ++at;
            return Take(1) ? va_arg(m_Arguments, int) : 0;
        }
        char *end = const_cast<char *>(at);
        const bool is_number = *at >= '0' && *at <= '9';
        const long number = is_number ? std::strtol(at, &end, 10) : 0;
        at = end;
        return number;
    }

    // `at` is behind the percent sign, and behind the conversion afterwards.
    Conversion Parse(const char *&at) {
        Conversion parsed;
        const std::size_t flag_count = std::strspn(at, "-+ #0");
        if (flag_count >= sizeof parsed.flags) return parsed;
        std::memcpy(parsed.flags, at, flag_count);
        at += flag_count;
        parsed.width = Bounded(Take_Number(at));
        if (*at == '.') parsed.precision = Bounded(Take_Number(++at));
        for (; *at == 'l' && parsed.size < 2; ++at) ++parsed.size;
        for (; *at == 'h' && parsed.size <= 0 && parsed.size > -2; ++at) --parsed.size;
        const bool is_known =
            *at && (std::strchr("diouxX", *at) || (parsed.size == 0 && std::strchr("csp%", *at)) ||
                    ((parsed.size == 0 || parsed.size == 1) && std::strchr("eEfFgG", *at)));
        if (is_known && Take(Words_Of(parsed.size, *at))) parsed.letter = *at++;
        return parsed;
    }

    static int Words_Of(int size, char letter) {
        if (letter == '%') return 0;
        return size == 2 || std::strchr("eEfFgG", letter) ? 2 : 1;
    }

    // What is behind it; null when it is none that is known, and nothing is put.
    const char *Put_Conversion(const char *at) {
        const Conversion conversion = Parse(++at);
        switch (conversion.letter) {
        case 0:
            return nullptr;
        case '%':
            Put_Text("%", 1);
            break;
        case 'd':
        case 'i':
            Put(conversion, "ll", Take_Signed(conversion.size));
            break;
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            Put(conversion, "ll", Take_Unsigned(conversion.size));
            break;
        case 'c':
            Put(conversion, "", va_arg(m_Arguments, int));
            break;
        case 'p':
            Put(conversion, "", va_arg(m_Arguments, void *));
            break;
        case 's':
            Put_String(conversion, va_arg(m_Arguments, const char *));
            break;
        default:
            Put(conversion, "", va_arg(m_Arguments, double));
            break;
        }
        return at;
    }

    long long Take_Signed(int size) {
        if (size == 2) return va_arg(m_Arguments, long long);
        const long value = va_arg(m_Arguments, long);
        return size == -2 ? static_cast<signed char>(value) : size == -1 ? static_cast<short>(value) : value;
    }

    unsigned long long Take_Unsigned(int size) {
        if (size == 2) return va_arg(m_Arguments, unsigned long long);
        const unsigned long value = va_arg(m_Arguments, unsigned long);
        return size == -2   ? static_cast<unsigned char>(value)
               : size == -1 ? static_cast<unsigned short>(value)
                            : value;
    }

    void Put_String(Conversion conversion, const char *text) {
        const int room = static_cast<int>(m_Left);
        if (conversion.precision < 0 || conversion.precision > room) conversion.precision = room;
        if (!text) text = "(null)";
        if (IsBadStringPtrA(text, static_cast<UINT>(conversion.precision))) text = "(unreadable)";
        Put(conversion, "", text);
    }

    template <class Value>
    void Put(const Conversion &conversion, const char *size, Value value) {
        char format[24];
        std::snprintf(format, sizeof format, "%%%s*.*%s%c", conversion.flags, size, conversion.letter);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // made in the line above, of parts that are known
        const int length =
            std::snprintf(m_Out, m_Left + 1, format, conversion.width, conversion.precision, value);
#pragma GCC diagnostic pop
        Advance(length > 0 ? std::min(static_cast<std::size_t>(length), m_Left) : 0);
    }

    char *m_Out; // where the next character goes
    std::size_t m_Left;
    int m_Words = 0; // of arguments, taken so far
    va_list m_Arguments;
};

} // namespace

void Format_By_Table(char *out, std::size_t size, const char *format, va_list arguments) {
    Formatter(out, size, arguments).Run(format);
}
