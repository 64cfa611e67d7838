#include <kelmara/content/sections.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/foundation/case_folding.h>
#include <kelmara/foundation/interface_identifiers.h>
#include <kelmara/foundation/owned_block.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr long Longest_Name = 255;
constexpr long Longest_Section_Name = 256;
constexpr long Longest_Inline_Value = 255;

/// What the list of a section's items owns.
struct ItemRecord {
    char name[Longest_Name + 1];
    long size; // as it was added
    char inline_value[Longest_Inline_Value + 1];
    char *heap_value; // null for an inline value; both have a terminator behind `size` bytes
    void (*release)(void *);

    char *Value() { return heap_value ? heap_value : inline_value; }
};
static_assert(offsetof(ItemRecord, size) == 256 && offsetof(ItemRecord, inline_value) == 260);
static_assert(offsetof(ItemRecord, heap_value) == 516 && offsetof(ItemRecord, release) == 520);
static_assert(sizeof(ItemRecord) == 524);

// The value goes when its record goes, and the record also when the release of the value throws.
void Release_Record(void *block) {
    const auto *const record = static_cast<ItemRecord *>(block);
    try {
        if (record->heap_value && record->release) record->release(record->heap_value);
    } catch (...) {
    }
    ds_free(block);
}

std::size_t Name_Length(const char *name) {
    return name ? strnlen(name, Longest_Name + 1) : 0;
}

void Copy_With_Terminator(char *target, const char *source, long size) {
    if (size > 0) std::memcpy(target, source, static_cast<std::size_t>(size));
    target[size] = 0;
}

} // namespace

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct SectionEntryLayout {
    static_assert(offsetof(CSectionEntry, m_Name) == 4 && offsetof(CSectionEntry, m_Items) == 260);
    static_assert(offsetof(CSectionEntry, m_RefCount) == 300);
};
#pragma GCC diagnostic pop

// --- a section --------------------------------------------------------------------------------------------

CSectionEntry::CSectionEntry(const char *name) : m_Name() {
    Copy_With_Terminator(m_Name, name, std::min(static_cast<long>(Name_Length(name)), Longest_Name));
    m_Items.Set_Mem_Procs(ds_malloc_procptr, Release_Record);
}

CSectionEntry::CSectionEntry(const CSectionEntry &other) = default;

CSectionEntry &CSectionEntry::operator=(const CSectionEntry &other) = default;

CSectionEntry::~CSectionEntry() = default;

long CSectionEntry::QueryInterface(const GUID &iid, void **object) {
    if (!object) return E_INVALIDARG;
    *object = nullptr;
    if (!Is_Same_Identifier(iid, IID_IUnknown) && !Is_Same_Identifier(iid, IID_ISectionEntryInterface))
        return E_NOINTERFACE;
    *object = static_cast<ISectionEntryInterface *>(this);
    AddRef();
    return S_OK;
}

unsigned long CSectionEntry::AddRef() {
    return static_cast<unsigned long>(++m_RefCount);
}

unsigned long CSectionEntry::Release() {
    if (--m_RefCount != 0) return static_cast<unsigned long>(m_RefCount);
    delete this;
    return 0;
}

void CSectionEntry::Get_Section_Name(char *name) {
    if (name) std::memcpy(name, m_Name, std::strlen(m_Name) + 1);
}

long CSectionEntry::Add_Item(char *name, char *value, long size) {
    const auto name_length = static_cast<long>(Name_Length(name));
    if (!name || name_length > Longest_Name || size < 0 || (!value && size > 0)) return E_INVALIDARG;
    const bool is_inline = size <= Longest_Inline_Value;
    if (size == LONG_MAX) return E_OUTOFMEMORY;
    OwnedBlock heap_value(is_inline ? nullptr : ds_malloc(size + 1));
    if (!is_inline && !heap_value.Get()) return E_OUTOFMEMORY;

    ItemRecord record = {};
    Copy_With_Terminator(record.name, name, name_length);
    record.size = size;
    Copy_With_Terminator(is_inline ? record.inline_value : heap_value.Get(), value, size);
    try {
        auto *const added = static_cast<ItemRecord *>(m_Items.AddVolatile(&record, sizeof record, 0));
        if (!added) return E_OUTOFMEMORY;
        if (is_inline) return 0;
        added->release = ds_free_procptr;
        added->heap_value = heap_value.Hand_Over();
        return 0;
    } catch (...) {
        return E_OUTOFMEMORY; // the list has no memory for an entry
    }
}

char *CSectionEntry::Get_Item_Data(char *name, long *size) {
    const std::size_t length = Name_Length(name);
    if (!name || length > Longest_Name) return nullptr;
    char wanted[Longest_Name + 1], folded[Longest_Name + 1];
    case_folding::Fold_Copy(wanted, name, length + 1);
    CIterator walk;
    for (void *entry = walk.Iterate(&m_Items); walk.More(); entry = walk.Next()) {
        auto *const record = static_cast<ItemRecord *>(entry);
        case_folding::Fold_Copy(folded, record->name, length + 1);
        if (std::memcmp(folded, wanted, length + 1) != 0) continue;
        if (size) *size = record->size;
        return record->Value();
    }
    return nullptr;
}

long CSectionEntry::Get_Item_Count() {
    return m_Items.Entries(0);
}

void CSectionEntry::Get_Next_Item(int index, char **name, char **value, long *size) {
    auto *const record = static_cast<ItemRecord *>(m_Items.GetEntry(index, 0));
    if (name) *name = record ? record->name : nullptr;
    if (value) *value = record ? record->Value() : nullptr;
    if (record && size) *size = record->size;
}

// --- a text of sections -----------------------------------------------------------------------------------

namespace {

bool Ends_Line(char byte) {
    return byte == '\r' || byte == '\n';
}

/// What has come of a section until it is in its list.
struct NewSection {
    explicit NewSection(const char *name) : entry(new CSectionEntry(name)) {}
    ~NewSection() {
        if (entry) delete entry; // a null pointer is not for `delete`, which the log may hear of
    }
    NewSection(const NewSection &) = delete;
    NewSection &operator=(const NewSection &) = delete;

    CSectionEntry *Hand_Over() {
        CSectionEntry *const handed = entry;
        entry = nullptr;
        return handed;
    }

    CSectionEntry *entry;
};

class SectionScanner {
  public:
    /// `accumulator` has room for all the text and a byte more.
    SectionScanner(const char *text, long size, CDSList &sections, bool strip_quotes, char *accumulator)
        : m_At(text),
          m_End(text + size),
          m_Sections(sections),
          m_StripQuotes(strip_quotes),
          m_Accumulator(accumulator) {}

    long Scan() {
        while (m_At != m_End) {
            if (const long result = Take(*m_At++); result != 0) return result;
        }
        return End_Item(); // the last line always ends
    }

  private:
    enum class Mode { Name, Before_Value, Value };

    long Take(char byte);
    void Skip_Comment();
    long End_Item();
    long Complete_Name();
    long Begin_Section();

    const char *m_At, *const m_End;
    CDSList &m_Sections;
    const bool m_StripQuotes;
    char *const m_Accumulator;
    long m_Length = 0; // of what the accumulator holds
    Mode m_Mode = Mode::Name;
    char m_Name[Longest_Name + 1] = {};
    CSectionEntry *m_Section = nullptr;
};

inline long SectionScanner::Take(char byte) {
    switch (byte) {
    case '\r':
    case '\n':
        return End_Item();
    case ';':
        Skip_Comment();
        return 0;
    case '[':
        if (m_Mode != Mode::Value) return Begin_Section();
        break;
    case '=':
        if (m_Mode == Mode::Name) return Complete_Name();
        if (m_Mode == Mode::Before_Value) return 0;
        break;
    case '\t':
    case ' ':
        if (m_Mode != Mode::Value) return 0;
        break;
    case '"':
        if (m_StripQuotes) return 0;
        break;
    }
    m_Accumulator[m_Length++] = byte;
    if (m_Mode == Mode::Before_Value) m_Mode = Mode::Value;
    return 0;
}

void SectionScanner::Skip_Comment() {
    while (m_At != m_End && !Ends_Line(*m_At)) ++m_At;
}

long SectionScanner::Complete_Name() {
    if (m_Length > Longest_Name) return Malformed_Sections;
    Copy_With_Terminator(m_Name, m_Accumulator, m_Length);
    m_Length = 0;
    m_Mode = Mode::Before_Value;
    return 0;
}

long SectionScanner::End_Item() {
    if (m_Mode == Mode::Name || !m_Section) return 0;
    while (m_Length > 0 && (m_Accumulator[m_Length - 1] == ' ' || m_Accumulator[m_Length - 1] == '\t'))
        --m_Length;
    m_Accumulator[m_Length] = 0;
    const long result = m_Section->Add_Item(m_Name, m_Accumulator, m_Length + 1);
    m_Name[0] = 0;
    m_Length = 0;
    m_Mode = Mode::Name;
    return result;
}

long SectionScanner::Begin_Section() {
    const char *const start = m_At;
    const char *const last = m_End - start > Longest_Section_Name ? start + Longest_Section_Name + 1 : m_End;
    while (m_At != last && *m_At != ']' && !Ends_Line(*m_At)) ++m_At;
    if (m_At == last || *m_At != ']') return Malformed_Sections;

    char name[Longest_Section_Name + 1] = {};
    case_folding::Fold_Copy(name, start, static_cast<std::size_t>(m_At - start));
    ++m_At;
    NewSection section(name);
    if (!section.entry) return E_OUTOFMEMORY;
    if (!m_Sections.Add(section.entry, 0)) return E_UNEXPECTED;
    m_Section = section.Hand_Over();
    return 0;
}

// Not by `delete`: it would end the process over what the bound routine throws.
void Destroy_Quietly(CSectionEntry *section) {
    if (!section) return;
    try {
        section->~CSectionEntry();
        ds_free(section);
    } catch (...) {
    }
}

} // namespace

long Load_Sections(const char *text, long size, CDSList *sections, bool stripQuotes) {
    if (!sections || size < 0 || (!text && size > 0)) return Malformed_Sections;
    if (size == LONG_MAX) return E_OUTOFMEMORY;
    const OwnedBlock accumulator(ds_malloc(size + 1));
    if (!accumulator.Get()) return E_OUTOFMEMORY;
    return SectionScanner(text, size, *sections, stripQuotes, accumulator.Get()).Scan();
}

long Unload_Sections(CDSList *sections) {
    if (!sections) return 0;
    for (long before = sections->Entries(0); before > 0; before = sections->Entries(0)) {
        auto *const section = static_cast<CSectionEntry *>(sections->Pop(0));
        if (sections->Entries(0) >= before) break; // locked
        Destroy_Quietly(section);
    }
    return 0;
}

// --- texts that go with the format ------------------------------------------------------------------------

namespace {

bool Is_Letter(char byte) {
    const unsigned char folded = case_folding::Fold(static_cast<unsigned char>(byte));
    return folded >= 'A' && folded <= 'Z';
}

// The place behind `param` in `text`, null when the text does not begin with it.
const char *Behind(const char *param, const char *text) {
    for (; *param; ++param, ++text) {
        if (case_folding::Fold(static_cast<unsigned char>(*param)) !=
            case_folding::Fold(static_cast<unsigned char>(*text)))
            return nullptr;
    }
    return text;
}

} // namespace

bool Is_Param(const char *param, const char *text, char **after) {
    const char *found = nullptr;
    const char *place = param ? text : nullptr;
    while (place && !(found = Behind(param, place))) {
        do {
            place = *place ? place + 1 : nullptr;
        } while (place && Is_Letter(place[-1]));
    }
    if (after) *after = const_cast<char *>(found);
    return found != nullptr;
}

int Count_Lines(const char *text) {
    if (!text) return 0;
    int lines = 1;
    while ((text = std::strchr(text, '\n')) != nullptr) ++lines, ++text;
    return lines;
}
