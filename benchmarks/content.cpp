// Section files beside Boost's property tree, where Boost is at hand, and templates beside the least that any
// template engine does: finding the tokens of one kind with std::string, and their values in a map.

#include <benchmarks/growth.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/sections.h>
#include <kelmara/content/tokenizer.h>

#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#if defined(HAS_BOOST)
#include <boost/property_tree/ini_parser.hpp>
#include <sstream>
#endif

using measure::Compare;
using measure::Hidden;
using measure::Keep;

namespace {

// 1.1 MB: what a phone book of a large provider looks like.
std::string Section_File() {
    std::string text;
    for (int section = 0; section < 400; ++section) {
        text += "[Section " + std::to_string(section) + "]\r\n";
        for (int key = 0; key < 60; ++key) {
            text += "Key" + std::to_string(key) + " = value " + std::to_string(section * 60 + key) +
                    " of some more words here\r\n";
        }
    }
    return text;
}

long Load_And_Unload(const std::string &text) {
    CDSList sections;
    Load_Sections(text.data(), static_cast<long>(text.size()), &sections, true);
    const long count = sections.Entries(0);
    Unload_Sections(&sections);
    return count;
}

void Sections() {
    const std::string text = Section_File();
#if defined(HAS_BOOST)
    Compare(
        "load and unload 1.1 MB", MEASURED { Keep(Load_And_Unload(text)); },
        MEASURED {
            std::istringstream stream(text);
            boost::property_tree::ptree tree;
            boost::property_tree::read_ini(stream, tree);
            Keep(tree);
        },
        0.25);
#else
    Compare(
        "load and unload 1.1 MB", MEASURED { Keep(Load_And_Unload(text)); },
        MEASURED { Keep(std::string(text)); }, 1000);
#endif
}

using Variables = std::unordered_map<std::string, std::string>;

std::string Variable(int number) {
    return "VARIABLE" + std::to_string(number);
}

// 4.3 KB with 64 tokens of 16 variables, or as long and without any.
std::string Template(bool with_tokens) {
    std::string text;
    for (int token = 0; token < 64; ++token) {
        text += "Some words of a letter that goes to every customer in ";
        text += with_tokens ? "^" + Variable(token % 16) + "^" : "this town: ";
    }
    return text;
}

std::string Expanded_By_The_Peer(const std::string &text, const Variables &variables) {
    std::string out;
    out.reserve(2048);
    std::size_t from = 0;
    for (std::size_t open; (open = text.find('^', from)) != text.npos;) {
        out.append(text, from, open - from);
        const std::size_t close = text.find('^', open + 1);
        if (close == text.npos) return out;
        out += variables.at(text.substr(open + 1, close - open - 1));
        from = close + 1;
    }
    return out.append(text, from);
}

void Templates(const char *what, const std::string &text, double limit) {
    Variables peer_variables;
    for (int number = 0; number < 16; ++number)
        peer_variables[Variable(number)] = "value " + Variable(number);
    CHashTable variables;
    variables.Initialize(16);
    for (auto &[name, value] : peer_variables)
        variables.Add(name.c_str(), value.data(), static_cast<long>(value.size()));
    CTokenizer tokenizer;
    tokenizer.Use_Variable_Table(&variables);
    std::vector<char> result(text.size() + 4096);
    Compare(
        what,
        MEASURED {
            Keep(tokenizer.Tokenize(Hidden(text.c_str()), result.data(), static_cast<int>(result.size())));
        },
        MEASURED {
            const std::string expanded = Expanded_By_The_Peer(text, peer_variables);
            std::memcpy(result.data(), expanded.c_str(), expanded.size() + 1);
            Keep(result);
        },
        limit);
}

std::string Section_Of(long items) {
    std::string text = "[Section]\r\n";
    for (long key = 0; key < items; ++key)
        text += "Key" + std::to_string(key) + " = value " + std::to_string(key) + "\r\n";
    return text;
}

void Measure_Growth() {
    measure::Growth_Heading("content");
    measure::Growth load("load a section of n items", 1.1), find("the last of n items by its name", 1.1);
    measure::Growth walk("all of n items by their indices", 2.1), expand("expand n tokens", 1.1);
    char value[] = "value", name[] = "NAME";
    CHashTable variables;
    variables.Initialize(16);
    variables.Add(name, value, 5);
    CTokenizer tokenizer;
    tokenizer.Use_Variable_Table(&variables);
    for (const long size : measure::Sizes(100000)) {
        const std::string text = Section_Of(size);
        load.At(size, [&] { Keep(Load_And_Unload(text)); });
        CDSList sections;
        Load_Sections(text.data(), static_cast<long>(text.size()), &sections, true);
        auto *const section = static_cast<CSectionEntry *>(sections.GetEntry(0, 0));
        std::string last = "Key" + std::to_string(size - 1);
        find.At(size, [&] { Keep(section->Get_Item_Data(last.data(), nullptr)); });
        if (size <= 10000) {
            walk.At(size, [&] {
                char *item = nullptr;
                for (long index = 0; index < size; ++index)
                    section->Get_Next_Item(static_cast<int>(index), &item, nullptr, nullptr);
                Keep(item);
            });
        }
        Unload_Sections(&sections);
        std::string letter;
        for (long token = 0; token < size; ++token) letter += "some words to ^NAME^, ";
        std::vector<char> result(letter.size() * 2);
        expand.At(size, [&] {
            Keep(tokenizer.Tokenize(letter.c_str(), result.data(), static_cast<int>(result.size())));
        });
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
#if defined(HAS_BOOST)
    measure::Heading("section files", "Boost's property tree");
#else
    measure::Heading("section files", "a copy of the text");
#endif
    Sections();

    measure::Heading("templates", "std::string and a map");
    Templates("64 tokens in 4.3 KB", Template(true), 1.5);
    Templates("4.2 KB without a token", Template(false), 4.0);
    std::string megabyte;
    while (megabyte.size() < 1 << 20) megabyte += Template(false);
    Templates("1 MB without a token", megabyte, 2.0);
    Measure_Growth();
}
