#include <kelmara/localization/string_index.h>

namespace {

constexpr int Most_Walks = 64; // before filling pays

// What is in the cache by the time that the walk gets there.
constexpr int Prefetch_Distance = 1536;

// An entry's identifier, and a copy of it where it has no terminator.
class Key {
  public:
    explicit Key(const StringEntry *entry) : m_Text(entry->Identifier) {
        if (entry->Identifier[sizeof m_Copy - 1] == 0) return;
        const auto length = static_cast<std::size_t>(TableImage::Length_Of(entry->Identifier));
        std::memcpy(m_Copy, entry->Identifier, length);
        m_Copy[length] = 0;
        m_Text = m_Copy;
    }
    Key(const Key &) = delete;
    Key &operator=(const Key &) = delete;
    operator const char *() const { return m_Text; }

  private:
    const char *m_Text;
    char m_Copy[sizeof StringEntry::Identifier];
};

} // namespace

FoundString Walk_To_String(const TableImage &image, const char *identifier) {
    constexpr std::size_t longest = sizeof StringEntry::Identifier - 1;
    const std::size_t length = identifier ? std::strlen(identifier) : longest + 1;
    if (length > longest) return {};
    TableImage::Place at = image.First();
    for (long left = image.Count(); left > 0; --left) {
        const StringEntry *const entry = image.Entry_At(at);
        if (!entry) return {};
        __builtin_prefetch(reinterpret_cast<const char *>(entry) + Prefetch_Distance);
        const bool ends = length == longest || entry->Identifier[length] == 0;
        if (ends && std::memcmp(entry->Identifier, identifier, length) == 0)
            return {TableImage::Text(entry), image.Text_Length(entry)};
        at = image.Behind(at);
    }
    return {};
}

long StringIndex::Prepare(const TableImage &image) {
    m_Filled = false;
    return Initialize(static_cast<int>(image.Count()));
}

FoundString StringIndex::Find_String(const TableImage &image, const char *identifier) {
    if (!m_Filled && ++m_Walks > Most_Walks) Fill(image);
    if (!m_Filled) return Walk_To_String(image, identifier);
    char *text = nullptr; // its length is the index's: the entry in the block lies elsewhere in the cache
    long length = 0;
    Find(identifier, &text, &length);
    return {text, length};
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
        const StringEntry *const entry = image.Entry_At(at);
        if (!entry) break;
        Add(Key(entry), const_cast<char *>(TableImage::Text(entry)), image.Text_Length(entry));
        at = image.Behind(at);
    }
    m_Filled = Get_Num_Entries() == added;
}
