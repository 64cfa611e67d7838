#include <kelmara/content/tokenizer.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/iterator.h>
#include <kelmara/containers/smart_buffer.h>
#include <kelmara/content/define_file.h>
#include <kelmara/foundation/case_folding.h>
#include <kelmara/system/key_copy.h>

#include <platform/files.h>
#include <platform/kernel.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <emmintrin.h>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct TokenizerLayout {
    static_assert(offsetof(CTokenizer, m_BindingHost) == 4 && offsetof(CTokenizer, m_Descriptor) == 8);
    static_assert(offsetof(CTokenizer, m_TokenTable) == 12 && offsetof(CTokenizer, m_VariableTable) == 16);
    static_assert(offsetof(CTokenizer, m_BindingTables) == 20 &&
                  offsetof(CTokenizer, m_OwnsTokenTable) == 60);
};
#pragma GCC diagnostic pop

namespace {

constexpr long Any_Table = -1;
constexpr long Longest_Name = 255;
constexpr long Value_Size = 1024;
constexpr long First_Output_Size = 2048;
constexpr long Desktop_Size = 256;
constexpr std::size_t Pair_Length = 13, Table_Place = 1, Field_Place = 8; // 'TTTT','FFFF'
constexpr long Code_Place = 1, Code_Length = 4;                           // 'FFFF' in a define file

constexpr char Suite_Key[] = "Software\\Dunmerit Software\\Kelmara";
constexpr char Shell_Folders_Key[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

struct BindingTable {
    long code;
    IBindingHostInterface *host; // a reference
};
static_assert(sizeof(BindingTable) == 8);

long Read_Code(const char *text) {
    unsigned long code = 0;
    for (long i = 0; i < Code_Length; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return static_cast<long>(code);
}

bool Is_Sigil(char byte) {
    return byte == '$' || byte == '%' || byte == '&' || byte == '<' || byte == '^';
}

// The first sigil up to `end`, or that.
const char *Find_Sigil(const char *from, const char *end) {
    for (; end - from >= 16; from += 16) {
        const __m128i block = case_folding::Load(from);
        const auto is = [&](char sigil) { return _mm_cmpeq_epi8(block, _mm_set1_epi8(sigil)); };
        const __m128i found = _mm_or_si128(_mm_or_si128(_mm_or_si128(is('$'), is('%')), is('&')),
                                           _mm_or_si128(is('<'), is('^')));
        if (const int places = _mm_movemask_epi8(found)) return from + __builtin_ctz(places);
    }
    while (from != end && !Is_Sigil(*from)) ++from;
    return from;
}

/// The value's bytes to a buffer that is cleared. Nothing where there is none, or one that does not fit.
void Read_Registry(HKEY root, const char *path, const char *name, char *out, DWORD size) {
    OpenedKey key;
    if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.Place()) != 0) return;
    RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE *>(out), &size);
}

void End_In_Backslash(char *path) {
    const std::size_t length = std::strlen(path);
    if (length > 0 && path[length - 1] == '\\') return;
    path[length] = '\\';
    path[length + 1] = 0;
}

bool Fits_A_Path(unsigned long length) {
    return length > 0 && length < MAX_PATH;
}

/// To a cleared buffer of Value_Size bytes and one more.
void Read_Place(const char *name, char *out) {
    if (std::strcmp(name, "WINDOWS") == 0) {
        if (Fits_A_Path(GetWindowsDirectoryA(out, MAX_PATH))) End_In_Backslash(out);
    } else if (std::strcmp(name, "TEMP") == 0) {
        if (Fits_A_Path(GetTempPathA(MAX_PATH, out))) End_In_Backslash(out);
    } else if (std::strcmp(name, "DESKTOP") == 0) {
        Read_Registry(HKEY_CURRENT_USER, Shell_Folders_Key, "Desktop", out, Desktop_Size);
        End_In_Backslash(out);
    } else {
        Read_Registry(HKEY_LOCAL_MACHINE, Suite_Key, name, out, Value_Size);
    }
}

} // namespace

// --- what tokens are read from ----------------------------------------------------------------------------

CTokenizer::CTokenizer() = default;

CTokenizer::CTokenizer(const CTokenizer &other) = default;

CTokenizer &CTokenizer::operator=(const CTokenizer &other) = default;

CTokenizer::~CTokenizer() {
    CIterator walk;
    for (void *entry = walk.Iterate(&m_BindingTables); walk.More(); entry = walk.Next())
        static_cast<BindingTable *>(entry)->host->Release();
    Drop_Token_Table();
    if (m_BindingHost) m_BindingHost->Release();
}

void CTokenizer::Drop_Token_Table() {
    if (m_OwnsTokenTable) delete m_TokenTable;
    m_TokenTable = nullptr;
    m_OwnsTokenTable = false;
}

void CTokenizer::Use_Binding_Host(IBindingHostInterface *host) {
    if (host == m_BindingHost) return;
    if (m_BindingHost) m_BindingHost->Release();
    m_BindingHost = host;
    if (host) host->AddRef();
}

void CTokenizer::Use_Component_Desc(ComponentDescriptor *descriptor) {
    m_Descriptor = descriptor;
}

long CTokenizer::Use_Define_File(const char *name) {
    Drop_Token_Table();
    m_TokenTable = new CHashTable;
    if (!m_TokenTable) return E_OUTOFMEMORY;
    m_OwnsTokenTable = true;
    return Tokenize_Define_File(name, m_TokenTable);
}

void CTokenizer::Use_Token_Table(CHashTable *table) {
    if (table == m_TokenTable) return;
    Drop_Token_Table();
    m_TokenTable = table;
}

void CTokenizer::Use_Variable_Table(CHashTable *table) {
    m_VariableTable = table;
}

void CTokenizer::Add_Binding_Table(long table, IBindingHostInterface *host) {
    if (!host) return;
    host->AddRef();
    bool added = false;
    try {
        BindingTable record{table, host};
        added = m_BindingTables.AddVolatile(&record, sizeof record, 0) != nullptr;
    } catch (...) {
        added = false; // the list has no memory for an entry
    }
    if (!added) host->Release();
}

long CTokenizer::Get_Binding_Interface(long table, IBindingHostInterface **host) {
    CIterator walk;
    for (void *entry = walk.Iterate(&m_BindingTables); walk.More(); entry = walk.Next()) {
        const auto *const record = static_cast<BindingTable *>(entry);
        if (table != Any_Table && record->code != table) continue;
        *host = record->host;
        return 0;
    }
    return Unknown_Binding_Table;
}

long CTokenizer::Get_Table_Field_Pair(const char *text, long *table, long *field) {
    if (!text || strnlen(text, Pair_Length + 1) != Pair_Length) return E_INVALIDARG;
    *table = Read_Code(text + Table_Place);
    *field = Read_Code(text + Field_Place);
    return 0;
}

// --- expanding --------------------------------------------------------------------------------------------

class KELMARA_INTERNAL CTokenizer::Expansion {
  public:
    explicit Expansion(CTokenizer &tokenizer) : m_Tokenizer(tokenizer) {}

    long Run(const char *text) {
        if (const long result = m_Output.Initialize(First_Output_Size); result != 0) return result;
        if (const long result = Walk(text, text + std::strlen(text)); result != 0) return result;
        return m_Output.Write("", 1);
    }

    void Copy_To(char *result, long size) {
        const long length = std::min(size, m_Output.Get_End_Of_Data());
        if (length > 0) std::memcpy(result, static_cast<char *>(m_Output), static_cast<std::size_t>(length));
    }

  private:
    long Walk(const char *at, const char *end);
    long Take_Token(char sigil, const char *name, const char *name_end);
    long Take_Table_Field();
    long Take_Named_Field();
    long Take_Place();
    long Take_Component_Fact();
    long Take_Variable();

    char *Cleared_Value() {
        std::memset(m_Value, 0, sizeof m_Value);
        return m_Value;
    }
    long Append_Field(IBindingHostInterface *host, long field) {
        if (const long result = host->Get_Field_Value(field, Cleared_Value(), Value_Size); result != 0)
            return result;
        return Append_Text(m_Value, Value_Size);
    }
    /// What stands there before the first zero byte, at most `limit` bytes.
    long Append_Text(const char *text, long limit) {
        return m_Output.Write(text, static_cast<long>(strnlen(text, static_cast<std::size_t>(limit))));
    }
    bool Name_Is(const char *name) const { return std::strcmp(m_Name, name) == 0; }

    CTokenizer &m_Tokenizer;
    CSmartBuffer m_Output;
    char m_Name[Longest_Name + 1];
    char m_Value[Value_Size + 1]; // the last byte stays a terminator, whatever a source fills in
};

long CTokenizer::Expansion::Walk(const char *at, const char *end) {
    for (;;) {
        const char *const sigil = Find_Sigil(at, end);
        if (const long result = m_Output.Write(at, sigil - at); result != 0) return result;
        if (end - sigil < 2) return 0; // no sigil, or the text ends within its token
        const char *const name = sigil + 1;
        if (*name == *sigil) {
            if (const long result = m_Output.Write(sigil, 1); result != 0) return result;
            at = name + 1;
            continue;
        }
        const auto length = static_cast<std::size_t>(std::min<long>(end - name, Longest_Name));
        const void *const closing = std::memchr(name, *sigil == '<' ? '>' : *sigil, length);
        const char *const name_end = closing ? static_cast<const char *>(closing) : name + length;
        if (name_end == end) return 0;
        if (const long result = Take_Token(*sigil, name, name_end); result != 0) return result;
        at = name_end + 1;
    }
}

long CTokenizer::Expansion::Take_Token(char sigil, const char *name, const char *name_end) {
    const auto length = static_cast<std::size_t>(name_end - name);
    if (sigil == '$' || sigil == '&')
        std::memcpy(m_Name, name, length);
    else
        case_folding::Fold_Copy(m_Name, name, length);
    m_Name[length] = 0;
    switch (sigil) {
    case '$':
        return Take_Table_Field();
    case '&':
        return Take_Named_Field();
    case '%':
        return Take_Place();
    case '<':
        return Take_Component_Fact();
    default:
        return Take_Variable();
    }
}

long CTokenizer::Expansion::Take_Table_Field() {
    long table = 0, field = 0;
    if (const long result = m_Tokenizer.Get_Table_Field_Pair(m_Name, &table, &field); result != 0)
        return result;
    IBindingHostInterface *host = nullptr;
    if (const long result = m_Tokenizer.Get_Binding_Interface(table, &host); result != 0) return result;
    return Append_Field(host, field);
}

long CTokenizer::Expansion::Take_Named_Field() {
    if (!m_Tokenizer.m_TokenTable || !m_Tokenizer.m_BindingHost) return E_INVALIDARG;
    char *value = nullptr;
    long size = 0;
    if (const long result = m_Tokenizer.m_TokenTable->Find(m_Name, &value, &size); result != 0) return result;
    if (!value || size < Code_Place + Code_Length) return E_INVALIDARG;
    return Append_Field(m_Tokenizer.m_BindingHost, Read_Code(value + Code_Place));
}

long CTokenizer::Expansion::Take_Place() {
    Read_Place(m_Name, Cleared_Value());
    return Append_Text(m_Value, Value_Size);
}

long CTokenizer::Expansion::Take_Component_Fact() {
    const ComponentDescriptor *const component = m_Tokenizer.m_Descriptor;
    if (!component) return E_INVALIDARG;
    if (Name_Is("NAME")) return Append_Text(component->Name, sizeof component->Name);
    char text[16] = {};
    if (Name_Is("VERSION")) std::snprintf(text, sizeof text, "%i", static_cast<int>(component->Version));
    if (Name_Is("SERIALCODE")) {
        for (long i = 0; i < Code_Length; ++i)
            text[i] = static_cast<char>(component->Code >> 8 * (Code_Length - 1 - i));
    }
    return Append_Text(text, sizeof text);
}

long CTokenizer::Expansion::Take_Variable() {
    if (!m_Tokenizer.m_VariableTable) return E_INVALIDARG;
    char *value = nullptr;
    long size = 0;
    if (const long result = m_Tokenizer.m_VariableTable->Find(m_Name, &value, &size); result != 0)
        return result;
    return value ? Append_Text(value, std::clamp(size, 0L, Value_Size)) : 0;
}

bool CTokenizer::Tokenize(const char *text, char *result, int size) {
    if (result && size > 0) std::memset(result, 0, static_cast<std::size_t>(size));
    const auto expand = [&]() -> long {
        if (!text || (!result && size > 0)) return E_INVALIDARG;
        Expansion expansion(*this);
        if (const long failure = expansion.Run(text); failure != 0) return failure;
        expansion.Copy_To(result, size);
        return 0;
    };
    const long failure = expand();
    if (failure != 0) SetLastError(static_cast<DWORD>(failure));
    return failure == 0;
}
