#include <kelmara/localization/string_table.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_index.h>
#include <kelmara/localization/table_image.h>
#include <kelmara/localization/text_line.h>
#include <kelmara/system/file.h>

#include <platform/errors.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct StringTableLayout {
    static_assert(offsetof(CStringTable, m_Block) == 4 && offsetof(CStringTable, m_Size) == 8);
    static_assert(offsetof(CStringTable, m_Index) == 12 && offsetof(CStringTable, m_Unindexed) == 16);
};
#pragma GCC diagnostic pop

namespace {

constexpr int Not_Done = -1;
constexpr std::size_t Tail_Size = 3;                            // bytes behind a string
constexpr long Cleared_Size = 208;                              // bytes of a new entry
constexpr long Grown_Size = 208;                                // of the block by an entry, beside its string
constexpr int String_Room = 1024;                               // bytes of an exported string
constexpr int Comments_Room = 2 * sizeof StringEntry::Comments; // bytes of exported comments
constexpr int Line_Room = String_Room + 63 + 11 + 254 + 3 + 2;  // bytes of an exported line
constexpr int Import_Room = 2 * int{text_line::Longest} + 1;    // bytes of an imported string

// A block of no bytes has one all the same, so that it is a block.
std::size_t Room(long size) {
    return static_cast<std::size_t>(std::max(size, 1L));
}

// Zeroes, for what cannot be read.
char *New_Block(long size) {
    return size >= 0 ? static_cast<char *>(std::calloc(1, Room(size))) : nullptr;
}

void Move_Bytes(char *to, const char *from, long size) {
    if (size > 0) std::memmove(to, from, static_cast<std::size_t>(size));
}

template <std::size_t Size>
void Store_Cut(char (&field)[Size], const char *text) {
    const std::size_t length = std::min(std::strlen(text), Size - 1);
    std::memcpy(field, text, length);
    field[length] = 0;
}

} // namespace

CStringTable::CStringTable(bool unindexed) : m_Unindexed(unindexed) {}

CStringTable::CStringTable(const CStringTable &other) = default;

CStringTable &CStringTable::operator=(const CStringTable &other) = default;

CStringTable::~CStringTable() {
    Drop();
}

// --- loading and saving -----------------------------------------------------------------------------------

void CStringTable::Drop() {
    if (m_Index) delete m_Index;
    std::free(m_Block);
    m_Index = nullptr;
    m_Block = nullptr;
    m_Size = 0;
}

long CStringTable::New_Table() {
    char *const block = New_Block(sizeof(TableHeader));
    if (!block) return E_OUTOFMEMORY;
    Drop();
    m_Block = block;
    m_Size = sizeof(TableHeader);
    *reinterpret_cast<TableHeader *>(m_Block) = {sizeof(TableHeader), 1, 0, {0, 0}};
    m_Index = new StringIndex; // without it access by index walks from the first entry on
    return 0;
}

long CStringTable::Load_Table(CKMFile *file) {
    if (!file) return ERROR_FILE_INVALID;
    Drop();
    const long length = file->GetLength();
    m_Block = New_Block(length);
    if (!m_Block) return E_OUTOFMEMORY;
    m_Size = length;
    file->Read(m_Block, length);
    return Make_Index();
}

long CStringTable::Make_Index() {
    m_Index = new StringIndex;
    if (m_Unindexed) return 0;
    if (m_Index && m_Index->Prepare(TableImage(m_Block, m_Size)) == 0) return 0;
    Drop();
    return E_OUTOFMEMORY;
}

long CStringTable::Save_Changes(CKMFile *file) {
    return file ? file->Write(m_Block, m_Size, false) : ERROR_FILE_INVALID;
}

void CStringTable::Forget_Index() {
    if (m_Index) m_Index->Forget();
}

// --- asking -----------------------------------------------------------------------------------------------

long CStringTable::Count_Entries() {
    return TableImage(m_Block, m_Size).Count();
}

// By index; a step costs as long as a miss of the cache, and most callers go on from where they were.
unsigned long CStringTable::Place_Of(long index) {
    const TableImage image(m_Block, m_Size);
    return m_Index ? m_Index->Place_Of(image, index) : image.Place_Behind(image.First(), index);
}

StringEntry *CStringTable::Get_Entry(long index) {
    const TableImage image(m_Block, m_Size);
    return std::max(index, 0L) < image.Count() ? image.Entry_At(Place_Of(index)) : nullptr;
}

void CStringTable::Get_String(long index, CSafeStr &out) {
    out = "";
    const StringEntry *const entry = Get_Entry(index);
    if (entry) out.Set_Data(TableImage::Text(entry), TableImage(m_Block, m_Size).Text_Length(entry));
}

void CStringTable::Get_String_From_Identifier(const char *identifier, CSafeStr &out) {
    const TableImage image(m_Block, m_Size);
    FoundString found;
    if (m_Unindexed)
        found = Walk_To_String(image, identifier);
    else if (m_Index && m_Index->Has_Room())
        found = m_Index->Find_String(image, identifier);
    out = "";
    if (found.text) out.Set_Data(found.text, found.length);
}

void CStringTable::Get_String_From_Identifier(const CSafeStr &identifier, CSafeStr &out) {
    Get_String_From_Identifier(static_cast<const char *>(static_cast<char *>(identifier)), out);
}

void CStringTable::Get_String_Identifier(long index, CSafeStr &out) {
    const StringEntry *const entry = Get_Entry(index);
    if (entry) out.Set_Data(entry->Identifier, TableImage::Length_Of(entry->Identifier));
}

void CStringTable::Get_String_Comments(long index, CSafeStr &out) {
    const StringEntry *const entry = Get_Entry(index);
    if (entry) out.Set_Data(entry->Comments, TableImage::Length_Of(entry->Comments));
}

long CStringTable::Get_String_Type(long index) {
    const StringEntry *const entry = Get_Entry(index);
    return entry ? entry->Type : Not_Done;
}

// --- editing ----------------------------------------------------------------------------------------------

bool CStringTable::Grow(long bytes) {
    if (bytes > LONG_MAX - m_Size) return false;
    auto *const grown = static_cast<char *>(std::realloc(m_Block, Room(m_Size + bytes)));
    if (!grown) return false;
    std::memset(grown + m_Size, 0, static_cast<std::size_t>(bytes));
    m_Block = grown;
    m_Size += bytes;
    return true;
}

// A block that cannot be made smaller stays as large as it is.
void CStringTable::Shrink(long bytes) {
    m_Size -= bytes;
    void *const shrunk = std::realloc(m_Block, Room(m_Size));
    if (shrunk) m_Block = static_cast<char *>(shrunk);
}

StringEntry *CStringTable::Append_Entry(long index, long length) {
    const TableImage image(m_Block, m_Size);
    const TableImage::Place place = index == image.Count() ? Place_Of(index) : TableImage::Nowhere;
    if (place == TableImage::Nowhere || !Grow(length + Grown_Size)) return nullptr;
    TableImage(m_Block, m_Size).Header()->Entry_Count = index + 1;
    std::memset(m_Block + place, 0, Cleared_Size);
    return reinterpret_cast<StringEntry *>(m_Block + place);
}

StringEntry *CStringTable::Resize_Entry(long index, long length) {
    const TableImage image(m_Block, m_Size);
    const TableImage::Place place = Place_Of(index), next = image.Behind(place);
    if (next == TableImage::Nowhere) return nullptr;
    const long longer = static_cast<long>(place - next) + length + TableImage::Frame_Size;
    const long moved = index == image.Count() - 1 ? 0 : m_Size - static_cast<long>(next);
    if (longer > 0 && !Grow(longer)) return nullptr;
    Move_Bytes(m_Block + next + longer, m_Block + next, moved);
    if (longer < 0) Shrink(-longer);
    return reinterpret_cast<StringEntry *>(m_Block + place);
}

int CStringTable::Store_String(long index, const char *text, long length) {
    const long count = Count_Entries();
    if (length > SHRT_MAX || (index < 0 && count == 0)) return Not_Done;
    index = std::max(index, 0L);
    StringEntry *const entry = index >= count ? Append_Entry(index, length) : Resize_Entry(index, length);
    if (!entry) return Not_Done;
    const TableImage image(m_Block, m_Size);
    char *const string = reinterpret_cast<char *>(entry + 1);
    if (image.Header()->Bytes_Per_Character > 0) Move_Bytes(string, text, length);
    std::memset(string + length, 0, Tail_Size);
    entry->Length = static_cast<short>(length);
    entry->Size = static_cast<unsigned long>(length + TableImage::Frame_Size);
    Forget_Index();
    return static_cast<int>(image.Count() - 1);
}

int CStringTable::Set_String(long index, const CSafeStr &text) {
    return Store_String(index, text, text.Length());
}

void CStringTable::Set_Identifier(long index, const CSafeStr &identifier) {
    StringEntry *const entry = Get_Entry(index);
    if (!entry) return;
    Store_Cut(entry->Identifier, identifier);
    Forget_Index();
}

void CStringTable::Set_Comments(long index, const CSafeStr &comments) {
    StringEntry *const entry = Get_Entry(index);
    if (entry) Store_Cut(entry->Comments, comments);
}

void CStringTable::Set_Type(long index, long type) {
    StringEntry *const entry = Get_Entry(index);
    if (entry) entry->Type = type;
}

void CStringTable::Delete_String(long index) {
    const TableImage image(m_Block, m_Size);
    const long count = image.Count();
    index = std::max(index, 0L);
    const TableImage::Place place = index < count ? Place_Of(index) : TableImage::Nowhere;
    const TableImage::Place next = image.Behind(place);
    if (next == TableImage::Nowhere) return;
    if (index < count - 1) Move_Bytes(m_Block + place, m_Block + next, m_Size - static_cast<long>(next));
    image.Header()->Entry_Count = count - 1;
    Shrink(static_cast<long>(next - place));
    Forget_Index();
}

// --- text lines -------------------------------------------------------------------------------------------

void CStringTable::Get_Export_String(long index, char *line, int) {
    const StringEntry *const entry = Get_Entry(index);
    if (!entry || !line) return;
    const long length = TableImage(m_Block, m_Size).Text_Length(entry);
    char text[String_Room], comments[Comments_Room];
    text_line::Escape(TableImage::Text(entry), static_cast<std::size_t>(length), text, sizeof text);
    if (text_line::Escape(entry->Comments, sizeof entry->Comments - 1, comments, sizeof comments) == 0)
        std::strcpy(comments, " ");
    const int identifier_length = static_cast<int>(TableImage::Length_Of(entry->Identifier));
    std::snprintf(line, Line_Room, "%s\t%.*s\t%ld\t%s\r\n", text, identifier_length, entry->Identifier,
                  entry->Type, comments);
}

int CStringTable::Import_String(const char *line) {
    text_line::Fields fields;
    if (!fields.Split(line)) return Not_Done;
    char text[Import_Room];
    const std::size_t length = text_line::Escape(fields.String, text_line::Longest, text, sizeof text);
    const int index = Store_String(Count_Entries(), text, static_cast<long>(length));
    if (index == Not_Done) return Not_Done;

    StringEntry *const entry = Get_Entry(index);
    Store_Cut(entry->Identifier, fields.Identifier);
    const bool has_comments = fields.Comments[0] != ' ' && fields.Comments[1] != 0;
    if (has_comments) {
        text_line::Unescape(fields.Comments);
        Store_Cut(entry->Comments, fields.Comments);
    }
    entry->Type = std::strtol(fields.Type, nullptr, 10);
    return index;
}
