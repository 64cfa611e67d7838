// The hash table beside std::unordered_map with std::string keys, both asked with plain texts. All keys of a
// table share their first characters, as identifiers do, so all its entries are in one bucket.

#include <benchmarks/growth.h>

#include <kelmara/containers/hash_table.h>

#include <climits>
#include <malloc.h>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

using measure::Compare;
using measure::Keep;

namespace {

struct Block {
    char *data;
    long size;
};

using Peer = std::unordered_map<std::string, Block>;

constexpr int Counts[] = {1000, 10000, 100000};

char content[] = "content";

// 8 to 25 characters: the same six, then some of the alphabet, then what makes the key the only one.
std::vector<std::string> Keys(int count, const char *prefix, std::mt19937 &random) {
    std::vector<std::string> keys;
    for (int number = 0; number < count; ++number) {
        std::string unique;
        for (int rest = number; rest > 0 || unique.size() < 2; rest /= 36)
            unique += "0123456789abcdefghijklmnopqrstuvwxyz"[rest % 36];
        std::string key = prefix;
        const std::size_t length = 8 + random() % 18;
        while (key.size() + unique.size() < length) key += static_cast<char>('A' + random() % 26);
        keys.push_back(key + unique);
    }
    return keys;
}

// The texts in an order that is not that of the entries, asked for one after the other.
class Questions {
  public:
    Questions(const std::vector<std::string> &keys, std::mt19937 &random) : m_Keys(keys) {
        std::shuffle(m_Keys.begin(), m_Keys.end(), random);
    }
    const char *Next() {
        if (++m_At == m_Keys.size()) m_At = 0;
        return m_Keys[m_At].c_str();
    }

  private:
    std::vector<std::string> m_Keys;
    std::size_t m_At = 0;
};

void Fill(CHashTable &table, const std::vector<std::string> &keys) {
    if (table.Initialize(static_cast<int>(keys.size())) != 0) std::abort();
    for (const std::string &key : keys) table.Add(key.c_str(), content, sizeof content);
}

void Fill(Peer &peer, const std::vector<std::string> &keys) {
    peer.reserve(keys.size());
    for (const std::string &key : keys) peer.emplace(key.c_str(), Block{content, sizeof content});
}

[[gnu::always_inline]] inline void Ask(CHashTable &table, const char *key) {
    char *data;
    long size;
    Keep(table.Find(key, &data, &size));
    Keep(data);
    Keep(size);
}

[[gnu::always_inline]] inline void Ask(const Peer &peer, const char *key) {
    const auto found = peer.find(key);
    Block block = {};
    if (found != peer.end()) block = found->second;
    Keep(block.data);
    Keep(block.size);
}

void Measure_Filling(const std::string &what, const std::vector<std::string> &keys) {
    Compare(
        what.c_str(),
        [&] {
            CHashTable filled;
            Fill(filled, keys);
        },
        [&] {
            Peer filled;
            Fill(filled, keys);
        },
        2.0);
}

void Measure(int count) {
    std::mt19937 random(1);
    const std::vector<std::string> keys = Keys(count, "IDS_MS", random);
    const std::vector<std::string> absent = Keys(count, "IDS_MT", random);
    CHashTable table;
    Peer peer;
    Fill(table, keys);
    Fill(peer, keys);
    Questions our_hits(keys, random), peer_hits(our_hits);
    Questions our_misses(absent, random), peer_misses(our_misses);

    const std::string of = " of " + std::to_string(count);
    Compare(("find one" + of).c_str(), MEASURED { Ask(table, our_hits.Next()); },
            MEASURED { Ask(peer, peer_hits.Next()); }, 1.0);
    Compare(("find none" + of).c_str(), MEASURED { Ask(table, our_misses.Next()); },
            MEASURED { Ask(peer, peer_misses.Next()); }, 1.5);
    Measure_Filling("fill " + std::to_string(count) + ", pages from the system", keys);
}

void Measure_Growth() {
    measure::Growth_Heading("hash table");
    measure::Growth find("find one of n entries", 0.35), fill("fill a table with n entries", 1.2);
    for (const int size : {10, 100, 1000, 10000, 100000}) {
        std::mt19937 random(1);
        const std::vector<std::string> keys = Keys(size, "IDS_MS", random);
        CHashTable table;
        Fill(table, keys);
        Questions hits(keys, random);
        find.At(
            size, MEASURED { Ask(table, hits.Next()); });
        fill.At(size, [&] {
            CHashTable filled;
            Fill(filled, keys);
        });
    }
}

// A heap gets large blocks from the system anew for every run, as for a program's first table; that is most
// of what the rows above pay for, and the peer's small blocks are those of its last run. Here both have
// theirs.
void Measure_In_Kept_Memory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    for (const int count : Counts) {
        std::mt19937 random(1);
        Measure_Filling("fill " + std::to_string(count) + " in kept memory", Keys(count, "IDS_MS", random));
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
    measure::Heading("hash table", "std::unordered_map");
    for (const int count : Counts) Measure(count);
    Measure_In_Kept_Memory();
    Measure_Growth();
    return 0;
}
