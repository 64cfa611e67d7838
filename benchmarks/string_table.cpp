// The string table beside the host's gettext: one catalogue of 5,000 strings, as a `.ltx` file and as a `.mo`
// file that this program writes, both of them in the disk's cache.
//
// The host loads a catalogue by mapping its file, and reads of it what a lookup touches; a string table is
// read whole. A gettext domain stays loaded until the program ends, so each opening names the folder in a new
// way that leads to the same file, and each row has a process of its own.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>

#include <climits>
#include <clocale>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <libintl.h>
#include <malloc.h>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using measure::Compare;
using measure::Keep;

namespace {

namespace fs = std::filesystem;

constexpr int String_Count = 5000;

struct Message {
    std::string identifier, text;
};
using Catalogue = std::vector<Message>;

Catalogue Make_Catalogue() {
    std::mt19937 random(1);
    Catalogue catalogue;
    for (std::size_t number = 0; number < String_Count; ++number) {
        Message message = {"KMSTR_", ""};
        while (message.identifier.size() < 12 + number % 16)
            message.identifier += static_cast<char>('A' + random() % 26);
        message.identifier += "_" + std::to_string(number);
        const std::size_t length = 20 + random() % 60;
        while (message.text.size() < length)
            message.text += static_cast<char>(random() % 6 ? 'a' + random() % 26 : ' ');
        catalogue.push_back(message);
    }
    return catalogue;
}

// --- the peer's file --------------------------------------------------------------------------------------

void Append_Word(std::string &bytes, std::size_t word) {
    bytes.append(reinterpret_cast<const char *>(&word), 4);
}

// The hash of the file format, by which the table behind the texts is looked up.
unsigned long Name_Hash(const std::string &name) {
    unsigned long hash = 0;
    for (const unsigned char byte : name) {
        hash = (hash << 4) + byte;
        const unsigned long high = hash & 0xF0000000;
        if (high) hash = (hash ^ (high >> 24)) ^ high;
    }
    return hash;
}

bool Is_Prime(std::size_t number) {
    for (std::size_t divisor = 3; divisor * divisor <= number; divisor += 2) {
        if (number % divisor == 0) return false;
    }
    return number % 2 != 0;
}

std::string Hash_Table(const Catalogue &sorted, std::size_t size) {
    std::vector<unsigned long> cells(size);
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const unsigned long hash = Name_Hash(sorted[i].identifier);
        std::size_t at = hash % size;
        while (cells[at]) at = (at + 1 + hash % (size - 2)) % size;
        cells[at] = static_cast<unsigned long>(i + 1);
    }
    return {reinterpret_cast<const char *>(cells.data()), size * 4};
}

std::string Mo_File(Catalogue catalogue) {
    catalogue.push_back({"", "Content-Type: text/plain; charset=UTF-8\n"});
    std::sort(catalogue.begin(), catalogue.end(),
              [](const Message &a, const Message &b) { return a.identifier < b.identifier; });
    const std::size_t count = catalogue.size();
    std::size_t hash_size = count * 4 / 3 | 1;
    while (!Is_Prime(hash_size)) hash_size += 2;
    const std::size_t tables = 28, hash_at = tables + count * 16, texts_at = hash_at + hash_size * 4;

    std::string bytes, texts;
    for (const std::size_t word :
         {std::size_t{0x950412DE}, std::size_t{0}, count, tables, tables + count * 8, hash_size, hash_at})
        Append_Word(bytes, word);
    for (std::string Message::*const part : {&Message::identifier, &Message::text}) {
        for (const Message &message : catalogue) {
            Append_Word(bytes, (message.*part).size());
            Append_Word(bytes, texts_at + texts.size());
            texts.append((message.*part).c_str(), (message.*part).size() + 1);
        }
    }
    return bytes + Hash_Table(catalogue, hash_size) + texts;
}

// --- the files --------------------------------------------------------------------------------------------

class Files {
  public:
    explicit Files(const Catalogue &catalogue) {
        fs::create_directories(m_Folder + "/de/LC_MESSAGES");
        std::ofstream(m_Folder + "/de/LC_MESSAGES/peer.mo", std::ios::binary) << Mo_File(catalogue);
        Write_Table(catalogue);
    }
    std::size_t Table_Size() const { return fs::file_size(m_Folder + "/drive_c/ours.ltx"); }
    std::size_t Peer_Size() const { return fs::file_size(m_Folder + "/de/LC_MESSAGES/peer.mo"); }

    /// The folder by another name each time, each behind the last in the order of texts: the peer's list of
    /// what it has loaded is searched from its end.
    const char *Folder() {
        m_Name = m_Folder + "/";
        for (int bit = 15; bit >= 0; --bit) m_Name += m_Openings >> bit & 1 ? ".//" : "./";
        ++m_Openings;
        return m_Name.c_str();
    }

  private:
    static void Write_Table(const Catalogue &catalogue) {
        CStringTable table(true);
        CKMFile file;
        if (table.New_Table() != 0 || file.Open("c:\\ours.ltx", true, true) != 0) std::abort();
        for (const Message &message : catalogue) {
            if (table.Import_String((message.text + "\t" + message.identifier + "\t0\t ").c_str()) < 0)
                std::abort();
        }
        if (table.Save_Changes(&file) != 0) std::abort();
    }

    const measure::OwnMachine m_Machine;
    const std::string m_Folder = m_Machine.Folder();
    std::string m_Name;
    int m_Openings = 0;
};

void Load(CStringTable &table) {
    CKMFile file;
    if (file.Open("c:\\ours.ltx", false, false) != 0 || table.Load_Table(&file) != 0) std::abort();
}

void Measure_Opening(const char *what, const Catalogue &catalogue, Files &files) {
    const char *const identifier = catalogue[String_Count / 2].identifier.c_str();
    Compare(
        what,
        [&] {
            CStringTable table;
            CSafeStr text;
            Load(table);
            table.Get_String_From_Identifier(identifier, text);
            if (text.Length() == 0) std::abort();
        },
        [&] {
            bindtextdomain("peer", files.Folder());
            const char *const text = dgettext("peer", identifier);
            if (text == identifier) std::abort();
            Keep(*text);
        },
        1.0);
}

// As a program has it that has used as much memory before; otherwise the system gives it anew each time, page
// by page as they are touched.
void Measure_Opening_In_Kept_Memory(const Catalogue &catalogue, Files &files) {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    Measure_Opening("open and find one, in kept memory", catalogue, files);
}

void Measure_Lookups(Catalogue catalogue, Files &files) {
    bindtextdomain("peer", files.Folder());
    std::shuffle(catalogue.begin(), catalogue.end(), std::mt19937(2));
    CStringTable table;
    Load(table);
    CSafeStr text;
    std::size_t ours = 0, peers = 0;
    const auto next = [&](std::size_t &at) {
        if (++at == catalogue.size()) at = 0;
        return catalogue[at].identifier.c_str();
    };
    for (int lookup = 0; lookup < 1000; ++lookup) table.Get_String_From_Identifier(next(ours), text);
    Compare(
        "find any string and read it (ours: copy it)",
        MEASURED {
            table.Get_String_From_Identifier(next(ours), text);
            Keep(text);
        },
        MEASURED { Keep(std::strlen(dgettext("peer", next(peers)))); }, 1.0);
    Compare(
        "find one string over and over",
        MEASURED {
            table.Get_String_From_Identifier(catalogue[0].identifier.c_str(), text);
            Keep(text);
        },
        MEASURED { Keep(std::strlen(dgettext("peer", catalogue[0].identifier.c_str()))); }, 1.0);
}

void Measure_Growth() {
    measure::Growth_Heading("string table");
    measure::Growth import("import n lines into a new table", 1.2),
        all("all of n strings by their indices", 1.2);
    measure::Growth load("load a table of n strings", 1.1), find("find one of n strings", 0.4);
    for (const long size : measure::Sizes(10000)) {
        const auto fill = [size](CStringTable &table) {
            table.New_Table();
            char line[100];
            for (long number = 0; number < size; ++number) {
                std::snprintf(line, sizeof line, "a string of some words\tKMSTR_%ld\t0\t ", number);
                table.Import_String(line);
            }
        };
        import.At(size, [&] {
            CStringTable table(true);
        fill(table);
    });
    CStringTable table(true), loaded;
    CSafeStr text;
    fill(table);
    all.At(size, [&] {
        for (long index = 0; index < size; ++index) table.Get_String(index, text);
        Keep(text);
    });
    CKMFile file;
    file.Open("c:\\growth.ltx", true, true);
    table.Save_Changes(&file);
    file.Close();
    const auto load_it = [&] {
        CKMFile source;
        if (source.Open("c:\\growth.ltx", false, false) != 0 || loaded.Load_Table(&source) != 0) std::abort();
    };
    load.At(size, load_it);
    std::string identifier = "KMSTR_" + std::to_string(size / 2);
    for (int lookup = 0; lookup < 1000; ++lookup) loaded.Get_String_From_Identifier(identifier.c_str(), text);
    find.At(size, [&] {
        loaded.Get_String_From_Identifier(identifier.c_str(), text);
        Keep(text);
    });
}
} // namespace

/// The rows of a process that fails are lost; the others' stand.
template <class Work>
bool In_Own_Process(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) std::printf("the row above is not whole: status %d\n", status);
    return status == 0;
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
    if (!setlocale(LC_ALL, "C.UTF-8")) {
        std::printf("The locale C.UTF-8 is missing: without a locale the peer translates nothing.\n");
        return 1;
    }
    setenv("LANGUAGE", "de", 1);
    const Catalogue catalogue = Make_Catalogue();
    Files files(catalogue);
    measure::Heading("string table", "gettext");
    std::printf("%d strings, ours %zu bytes, the peer's %zu\n", String_Count, files.Table_Size(),
                files.Peer_Size());
    std::fflush(stdout);
    const bool done[] = {
        In_Own_Process([&] { Measure_Opening("open 5,000 strings and find one", catalogue, files); }),
        In_Own_Process([&] { Measure_Opening_In_Kept_Memory(catalogue, files); }),
        In_Own_Process([&] { Measure_Lookups(catalogue, files); }),
        In_Own_Process([] { Measure_Growth(); }),
    };
    return std::ranges::count(done, false) == 0 ? 0 : 1;
}
