// The growable buffer against std::string: replacing in one pass, and appending.

#include <benchmarks/measure.h>

#include <kelmara/containers/smart_buffer.h>

#include <cstring>
#include <string>

using measure::Compare;
using measure::Hidden;
using measure::Keep;

namespace {

constexpr long Megabyte = 1 << 20;

// A mark at the start of every 64 bytes; behind it words without its first byte, or full of it.
std::string Marked_Text(const std::string &mark, const std::string &filling) {
    std::string text;
    while (text.size() < Megabyte) {
        std::string line = mark;
        while (line.size() < 64) line += filling;
        text += line.substr(0, 64);
    }
    return text;
}

std::string Replaced(const std::string &text, const char *mark, std::size_t mark_length, const char *by) {
    std::string out;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(mark, from, mark_length)) != text.npos; from = at + mark_length) {
        out.append(text, from, at - from);
        out.append(by);
    }
    out.append(text, from);
    return out;
}

// Both begin with the loading of the text, which the replacement destroys.
void Replace_Marks(const char *what, const std::string &mark, const std::string &filling) {
    const std::string source = Marked_Text(mark, filling);
    Compare(
        what,
        MEASURED {
            CSmartBuffer buffer;
            buffer.Initialize(static_cast<long>(source.size()));
            buffer.Write(source.data(), static_cast<long>(source.size()));
            buffer.Search_And_Replace(Hidden(mark.c_str()), "0123456789", true);
            Keep(buffer);
        },
        MEASURED {
            std::string text;
            text.append(source);
            Keep(Replaced(text, Hidden(mark.c_str()), mark.size(), "0123456789"));
        },
        1.0);
}

void Append(const char *what, long total, long piece) {
    const std::string bytes(static_cast<std::size_t>(piece), 'x');
    const char *const data = bytes.data();
    Compare(
        what,
        MEASURED {
            CSmartBuffer buffer;
            buffer.Initialize(2048);
            for (long done = 0; done < total; done += piece) buffer.Write(Hidden(data), Hidden(piece));
            Keep(buffer);
        },
        MEASURED {
            std::string text;
            text.reserve(2048);
            for (long done = 0; done < total; done += piece)
                text.append(Hidden(data), static_cast<std::size_t>(Hidden(piece)));
            Keep(text);
        },
        1.2);
}

} // namespace

int main() {
    measure::Use_Plain_Memory();

    measure::Heading("1 MB, 6 bytes in 64 to 10, against find and append");
    Replace_Marks("a rare first byte", "%name%", "plain words ");
    Replace_Marks("a common first byte", "eagles", "the seven elements ");

    measure::Heading("appending against std::string");
    Append("10 MB in pieces of 1 byte", 10 * Megabyte, 1);
    Append("100 MB in pieces of 1 KB", 100 * Megabyte, 1024);
}
