// The growable buffer against std::string: replacing in one pass, and appending.

#include <benchmarks/growth.h>

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

void Measure_Growth() {
    measure::Growth_Heading("buffer");
    measure::Growth append("append n bytes one by one", 1.1), replace("replace in n marked lines", 1.1);
    measure::Growth move("move to the end of n bytes", 1.1);
    for (const long size : measure::Sizes(100000)) {
        append.At(size, [&] {
            CSmartBuffer buffer;
            buffer.Initialize(16);
            for (long done = 0; done < size; ++done) buffer.Write("x", 1L);
            Keep(buffer);
        });
        std::string text;
        for (long line = 0; line < size; ++line) text += "some %name% and some more\n";
        text += '!';
        const long length = static_cast<long>(text.size());
        replace.At(size, [&] {
            CSmartBuffer buffer;
            buffer.Initialize(length);
            buffer.Write(text.data(), length);
            buffer.Search_And_Replace("%name%", "0123456789", true);
            Keep(buffer);
        });
        CSmartBuffer buffer;
        buffer.Initialize(size);
        buffer.Write(text.data() + length - size, size);
        move.At(size, [&] { Keep(buffer.Move_To(Hidden("!"), true)); });
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();

    measure::Heading("buffer", "std::string");
    Replace_Marks("replace in 1 MB, a rare first byte", "%name%", "plain words ");
    Replace_Marks("replace in 1 MB, a common first byte", "eagles", "the seven elements ");
    Append("append 10 MB in pieces of 1 byte", 10 * Megabyte, 1);
    Append("append 100 MB in pieces of 1 KB", 100 * Megabyte, 1024);
    Measure_Growth();
}
