#include <kelmara/localization/world_beat.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/shared_string.h>
#include <kelmara/localization/table_format.h>
#include <kelmara/shared_state/log.h>
#include <kelmara/suite/folders.h>
#include <kelmara/system/file.h>

#include <platform/user.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct WorldBeatLayout {
    static_assert(offsetof(CWorldBeat, m_Table) == 4);
    static constexpr std::size_t Signature_Place = offsetof(CSafeStr, Signature);
};
#pragma GCC diagnostic pop

namespace {

constexpr char Marker = '^';
constexpr int Localization_Folder = 10;
constexpr std::size_t Path_Size = 256, Text_Size = 512, Entry_Size = 2048; // bytes, terminators included
constexpr unsigned long Signature_Of_Strings = 0xCAFEBABE;
constexpr long Most_In_Turn = 1000; // substitutions of what strings bring with them

const char *Text_Of(const CSafeStr &string) {
    return string;
}

// Whether it is a string at all, so that its bytes are looked at, and no object of it.
bool Has_Signature(const void *string) {
    unsigned long signature;
    std::memcpy(&signature, static_cast<const char *>(string) + WorldBeatLayout::Signature_Place,
                sizeof signature);
    return signature == Signature_Of_Strings;
}

// False when it does not fit, with as much in `path` as does.
bool Make_Path(char (&path)[Path_Size], const char *name, bool is_whole) {
    char folder[MAX_PATH] = {};
    if (!is_whole) GetKelMaraFolderPath(Localization_Folder, folder);
    return static_cast<std::size_t>(std::snprintf(path, sizeof path, "%s%s", folder, name)) < sizeof path;
}

// As a whole reference, not as the beginning of a longer one.
bool Holds_Reference(const char *text, const char *reference) {
    const std::size_t length = std::strlen(reference);
    for (const char *at = std::strstr(text, reference); at; at = std::strstr(at + 1, reference)) {
        if (at[length] == 0 || std::strchr(" \t\n\r", at[length])) return true;
    }
    return false;
}

// False, and the text is as it was, when the string does not fit. One that is no longer than the reference
// always does.
bool Replace_Reference(CSafeStr &text, const CSafeStr &reference, const CSafeStr &string) {
    const int length = text.Length();
    text.Replace_String(reference, string);
    return text.Length() != length || string.Length() <= reference.Length();
}

} // namespace

CWorldBeat::CWorldBeat() = default;

CWorldBeat::CWorldBeat(const CWorldBeat &other) = default;

CWorldBeat &CWorldBeat::operator=(const CWorldBeat &other) = default;

CWorldBeat::~CWorldBeat() = default;

long CWorldBeat::Load_Localization(const char *name, bool whole_path) {
    if (!name) name = "";
    char path[Path_Size];
    const bool fits = Make_Path(path, name, whole_path);
    Debug_Log_Entry("Looking for localization files in: %s", path);
    CKMFile file;
    const long result = fits ? file.Open(path, false, false) : CKMFile::File_Not_Found;
    if (result == 0) return m_Table.Load_Table(&file);
    Debug_Log_Entry("Missing localization file: %s", name);
    return result;
}

// --- strings ----------------------------------------------------------------------------------------------

// False, with `out` empty, when there is no memory.
bool CWorldBeat::Find(const char *identifier, CSafeStr &out) try {
    m_Table.Get_String_From_Identifier(identifier, out);
    return true;
} catch (...) { // the string's
    return false;
}

CSafeStr &CWorldBeat::Get_Temp_String(const char *identifier) {
    Get_String(identifier, Shared_String());
    return Shared_String();
}

bool CWorldBeat::Find_Marked(const char *marked, CSafeStr &out) {
    return marked[1] ? Find(marked + 1, out) : true;
}

void CWorldBeat::Get_String(const char *identifier, CSafeStr &out) {
    m_Table.Get_String_From_Identifier(identifier, out);
}

long CWorldBeat::Get_String(const char *identifier, char *buffer, int size) {
    CSafeStr string;
    if (!Find(identifier, string)) return E_OUTOFMEMORY;
    if (!buffer || string.Length() >= size) return ERROR_INSUFFICIENT_BUFFER;
    std::strcpy(buffer, string);
    return 0;
}

// --- dialogs and menus ------------------------------------------------------------------------------------

void CWorldBeat::Localize_Window(HWND window) {
    char text[Text_Size] = {};
    GetWindowTextA(window, text, sizeof text);
    CSafeStr string;
    if (*text == Marker && Find_Marked(text, string)) SetWindowTextA(window, string);
}

int CWorldBeat::EnumChildProc(HWND window, CWorldBeat *self) {
    self->Localize_Window(window);
    return 1;
}

void CWorldBeat::Localize_Dialog(HWND window) {
    if (!window) return; // whose children would be all windows of the process
    Localize_Window(window);
    EnumChildWindows(
        window,
        [](HWND child, LPARAM self) -> BOOL {
            return EnumChildProc(child, reinterpret_cast<CWorldBeat *>(self));
        },
        reinterpret_cast<LPARAM>(this));
}

// Not inlined, so that menus within menus cost little stack.
[[gnu::noinline]] void CWorldBeat::Localize_Item(HMENU menu, int position) {
    const auto item = static_cast<UINT>(position);
    char text[Text_Size] = {};
    GetMenuStringA(menu, item, text, sizeof text, MF_BYPOSITION);
    CSafeStr string;
    if (*text != Marker || !Find_Marked(text, string)) return;
    string.Replace_String("\\t", "\t");
    ModifyMenuA(menu, item, MF_BYPOSITION, GetMenuItemID(menu, position), string);
}

void CWorldBeat::Localize_Menu(HMENU menu) {
    const int count = GetMenuItemCount(menu);
    for (int position = 0; position < count; ++position) {
        if (const HMENU submenu = GetSubMenu(menu, position)) Localize_Menu(submenu);
        Localize_Item(menu, position);
    }
}

// --- running text -----------------------------------------------------------------------------------------

void CWorldBeat::Substitute(CSafeStr &text) {
    const char *const start = Text_Of(text);
    long left = static_cast<long>(std::count(start, start + text.Length(), Marker)) + Most_In_Turn;
    CSafeStr reference, string;
    for (int skip = 0; left > 0 && text.Get_Next_Insert_Token(reference, skip, Marker);) {
        const char *const identifier = Text_Of(reference) + 1;
        if (*identifier) Get_String(identifier, string);
        const bool replaced = *identifier && string.Length() > 0 && !Holds_Reference(string, reference) &&
                              Replace_Reference(text, reference, string);
        replaced ? --left : ++skip;
    }
}

void CWorldBeat::Localize_String(CSafeStr &text) try {
    if (Has_Signature(&text)) Substitute(text);
} catch (...) { // a string's: no memory
}

// --- messages and the log ---------------------------------------------------------------------------------

int CWorldBeat::MessageBoxA(HWND owner, const char *text, const char *title, unsigned long type) {
    CSafeStr found_text, found_title;
    Find(text, found_text);
    Find(title, found_title);
    return ::MessageBoxA(owner, found_text.Length() > 0 ? Text_Of(found_text) : text,
                         found_title.Length() > 0 ? Text_Of(found_title) : title, type);
}

void CWorldBeat::Std_Log_Entry(const char *identifier, ...) {
    CSafeStr format;
    if (!Find(identifier, format) || format.Length() == 0) return;
    char entry[Entry_Size];
    va_list arguments;
    va_start(arguments, identifier);
    Format_By_Table(entry, sizeof entry, format, arguments);
    va_end(arguments);
    ::Std_Log_Entry("%s", entry);
}
