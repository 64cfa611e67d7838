#include <kelmara/localization/string_index.h>

namespace {

constexpr int Most_Walks = 64; // before filling pays

// What is in the cache by the time that the walk gets there.
constexpr int Prefetch_Distance = 1536;

} // namespace

const StringEntry *Walk_To_Entry(const TableImage &image, const char *identifier) {
    constexpr std::size_t longest = sizeof StringEntry::Identifier - 1;
    const std::size_t length = identifier ? std::strlen(identifier) : longest + 1;
    if (length > longest) return nullptr;
    TableImage::Place at = image.First();
    for (long left = image.Count(); left > 0; --left) {
        const StringEntry *const entry = image.Entry_At(at);
        if (!entry) return nullptr;
        __builtin_prefetch(reinterpret_cast<const char *>(entry) + Prefetch_Distance);
        const bool ends = length == longest || entry->Identifier[length] == 0;
        if (ends && std::memcmp(entry->Identifier, identifier, length) == 0) return entry;
        at = image.Behind(at);
    }
    return nullptr;
}

long StringIndex::Prepare(const TableImage &image) {
    m_Filled = false;
    return Initialize(static_cast<int>(image.Count()));
}

const StringEntry *StringIndex::Find_Entry(const TableImage &image, const char *identifier) {
    if (!m_Filled && ++m_Walks > Most_Walks) Fill(image);
    if (!m_Filled) return Walk_To_Entry(image, identifier);
    char *text = nullptr;
    if (Find(identifier, &text, nullptr) != 0) return nullptr;
    return reinterpret_cast<StringEntry *>(text) - 1;
}

void StringIndex::Forget() {
    m_Filled = false;
    m_Walks = 0;
}

void StringIndex::Fill(const TableImage &image) {
    m_Walks = 0;
    const bool is_prepared = Buckets && Bucket_Count == image.Count() && Get_Num_Entries() == 0;
    if (!is_prepared && Prepare(image) != 0) return;
    long added = 0;
    TableImage::Place at = image.First();
    for (long left = image.Count(); left > 0; --left, ++added) {
        StringEntry *const entry = image.Entry_At(at);
        if (!entry) break;
        char identifier[sizeof entry->Identifier + 1];
        const char *key = entry->Identifier;
        if (entry->Identifier[sizeof entry->Identifier - 1] != 0) {
            const long length = TableImage::Length_Of(entry->Identifier);
            std::memcpy(identifier, entry->Identifier, static_cast<std::size_t>(length));
            identifier[length] = 0;
            key = identifier;
        }
        Add(key, const_cast<char *>(TableImage::Text(entry)), image.Text_Length(entry));
        at = image.Behind(at);
    }
    m_Filled = Get_Num_Entries() == added;
}
