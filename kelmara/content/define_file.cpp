#include <kelmara/content/define_file.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/content/sections.h>
#include <kelmara/foundation/owned_block.h>
#include <kelmara/suite/folders.h>
#include <kelmara/system/file.h>
#include <kelmara/system/remembered_directory.h>

#include <platform/runtime.h>

#include <climits>
#include <cstring>

namespace {

constexpr int Define_Folders[] = {5, 6}; // "Scripts", then "ScriptIncludes"
constexpr char Define[] = "#define";
constexpr long Define_Length = sizeof Define - 1;
constexpr long Name_Limit = 256;
constexpr long Value_Limit = 64; // bytes that are looked at; the last one is never part of a value

void Enter_Suite_Folder(int folder) {
    char path[MAX_PATH];
    GetKelMaraFolderPath(folder, path);
    if (*path) Machine_Change_Directory(path);
}

long Open_In_Suite_Folders(CKMFile &file, const char *name) {
    const RememberedDirectory before;
    if (!before.Is_Known()) return CKMFile::File_Not_Found;
    long result = CKMFile::File_Not_Found;
    for (const int folder : Define_Folders) {
        Enter_Suite_Folder(folder);
        result = file.Open(name, false, false);
        before.Go_Back();
        if (result == 0) break;
    }
    return result;
}

/// The whole file with a terminator: 0, and the block is the caller's.
long Read_Text(const char *name, char **text) {
    CKMFile file;
    if (const long result = Open_In_Suite_Folders(file, name); result != 0) return result;
    const long length = file.GetLength();
    if (length < 0 || length == LONG_MAX) return E_OUTOFMEMORY;
    OwnedBlock block(ds_malloc(length + 1));
    if (!block.Get()) return E_OUTOFMEMORY;
    if (const long result = length > 0 ? file.Read(block.Get(), length) : 0; result != 0) return result;
    block.Get()[length] = 0;
    *text = block.Hand_Over();
    return 0;
}

char *Behind_Blanks(char *place) {
    while (*place == ' ' || *place == '\t') ++place;
    return place;
}

char *Copy_Name(char *from, char (&name)[Name_Limit + 1]) {
    bool in_quotes = false;
    long length = 0;
    for (; *from && length < Name_Limit; ++from) {
        if (!in_quotes && (*from == ' ' || *from == '\t')) break;
        if (*from == '\'') in_quotes = !in_quotes;
        name[length++] = *from;
    }
    name[length] = 0;
    return from;
}

long Value_Size(const char *value) {
    long count = 0;
    while (count < Value_Limit && value[count] && value[count] != '\n') ++count;
    const bool is_rest_of_text = count < Value_Limit && !value[count];
    return is_rest_of_text || count == 0 ? count : count - 1;
}

void Add_Defines(char *text, CHashTable &table) {
    for (char *find = text; (find = std::strstr(find, Define)) != nullptr;) {
        find += Define_Length;
        char name[Name_Limit + 1];
        char *const value = Behind_Blanks(Copy_Name(Behind_Blanks(find), name));
        table.Add(name, value, Value_Size(value));
    }
}

} // namespace

long Tokenize_Define_File(const char *name, CHashTable *table) {
    if (!table) return E_INVALIDARG;
    char *text = nullptr;
    if (const long result = Read_Text(name, &text); result != 0) return result;
    OwnedBlock owner(text);
    if (const long result = table->Initialize(Count_Lines(text)); result != 0) return result;
    table->Associate_Raw_Data(owner.Hand_Over(), ds_free_procptr);
    Add_Defines(text, *table);
    return 0;
}
