#include <kelmara/localization/string_index.h>

#include <kelmara/containers/key_hash.h>
#include <kelmara/foundation/memory.h>

#include <platform/errors.h>

#include <bit>

namespace {

constexpr int Most_Walks = 64; // before filling pays

// What is in the cache by the time that the walk gets there.
constexpr int Prefetch_Distance = 1536;

constexpr unsigned long Cells_For(long entries) {
    return std::bit_ceil(static_cast<unsigned long>(entries) / 3 * 4 + 4); // a quarter stays free
}

bool Has_Identifier(const StringEntry *entry, const char *identifier, std::size_t length) {
    const bool ends = length == sizeof entry->Identifier - 1 || entry->Identifier[length] == 0;
    return ends && std::memcmp(entry->Identifier, identifier, length) == 0;
}

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
        if (Has_Identifier(entry, identifier, length))
            return {TableImage::Text(entry), image.Text_Length(entry)};
        at = image.Behind(at);
    }
    return {};
}

long StringIndex::Prepare(const TableImage &image) {
    const unsigned long cells = Cells_For(image.Count());
    m_Cells = static_cast<Cell *>(ds_malloc(static_cast<long>(cells * sizeof(Cell))));
    m_Last = cells - 1;
    return m_Cells ? 0 : E_OUTOFMEMORY;
}

StringIndex::~StringIndex() {
    if (m_Cells) ds_free(m_Cells);
}

FoundString StringIndex::Find_String(const TableImage &image, const char *identifier) {
    if (!m_Filled && Is_Due(image)) m_Filled = Fill(image);
    const std::size_t length = identifier ? std::strlen(identifier) : sizeof StringEntry::Identifier;
    if (!m_Filled || length >= sizeof StringEntry::Identifier) return Walk_To_String(image, identifier);
    const Cell *const cell = Find_Cell(image, identifier, length, Hash_Of_Key(identifier, length));
    if (!cell || cell->place == 0) return {};
    const StringEntry *const entry = image.Entry_At(cell->place);
    return {TableImage::Text(entry), image.Text_Length(entry)};
}

TableImage::Place StringIndex::Place_Of(const TableImage &image, long index) {
    index = std::max(index, 0L);
    const bool before = m_Last_Place != TableImage::Nowhere && m_Last_Index <= index;
    m_Last_Place = before ? image.Place_Behind(m_Last_Place, index - m_Last_Index)
                          : image.Place_Behind(image.First(), index);
    m_Last_Index = index;
    return m_Last_Place;
}

void StringIndex::Forget() {
    m_Filled = false;
    m_Walks = 0;
}

bool StringIndex::Is_Due(const TableImage &image) {
    if (m_Walks > Most_Walks || Cells_For(image.Count()) > m_Last + 1) return false;
    return ++m_Walks > Most_Walks;
}

// The cell of the entry with that identifier, or the empty one where it would be; null when that is too far.
StringIndex::Cell *StringIndex::Find_Cell(const TableImage &image, const char *identifier, std::size_t length,
                                          std::uint32_t hash) const {
    for (unsigned long way = 0; way <= Longest_Way_To_A_Cell; ++way) {
        Cell &cell = m_Cells[(hash + way) & m_Last];
        if (cell.place == 0) return &cell;
        if (cell.hash != hash) continue;
        const StringEntry *const entry = image.Entry_At(cell.place);
        __builtin_prefetch(TableImage::Text(entry));
        if (Has_Identifier(entry, identifier, length)) return &cell;
    }
    return nullptr;
}

bool StringIndex::Fill(const TableImage &image) {
    std::memset(m_Cells, 0, (m_Last + 1) * sizeof(Cell));
    TableImage::Place at = image.First();
    for (long left = image.Count(); left > 0; --left) {
        const StringEntry *const entry = image.Entry_At(at);
        if (!entry) break;
        const auto length = static_cast<std::size_t>(TableImage::Length_Of(entry->Identifier));
        const std::uint32_t hash = Hash_Of_Key(entry->Identifier, length);
        Cell *const cell = Find_Cell(image, entry->Identifier, length, hash);
        if (!cell) return false;
        if (cell->place == 0) *cell = {hash, at};
        at = image.Behind(at);
    }
    return true;
}
