#include <kelmara/system/directories.h>

#include <kelmara/foundation/string_helpers.h>
#include <kelmara/system/remembered_directory.h>

#include <platform/files.h>
#include <platform/kernel.h>
#include <platform/runtime.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr int Path_Size = 256;                    // bytes, terminator included
constexpr int Numbered_Path_Size = MAX_PATH + 10; // a directory and its suffix
constexpr int Failed = -1;

bool Join(char (&out)[Path_Size], const char *front, const char *back) {
    const int length = std::snprintf(out, sizeof out, "%s%s", front, back);
    return length >= 0 && length < Path_Size;
}

bool Ends_In_Backslash(const char *path) {
    const std::size_t length = std::strlen(path);
    return length > 0 && path[length - 1] == '\\';
}

bool Copy_With_Backslash(char (&out)[Path_Size], const char *path) {
    return path && *path && Join(out, path, Ends_In_Backslash(path) ? "" : "\\");
}

// --- creating ---------------------------------------------------------------------------------------------

// Leads to the directory and back, so that a relative path means the same at each step.
bool Can_Be_Entered(const char *path, const RememberedDirectory &before) {
    if (Machine_Change_Directory(path) != 0) return false;
    before.Go_Back();
    return true;
}

// Cuts `path`, which ends in a backslash, down to its deepest level that exists, with its backslash. Empty
// when that is the current directory.
void Find_Existing_Level(char *path, const RememberedDirectory &before) {
    char *end = path + std::strlen(path) - 1;
    for (;;) {
        *end = 0;
        if (end == path || Can_Be_Entered(path, before)) break;
        char *const separator = std::strrchr(path, '\\');
        if (!separator) {
            *path = 0;
            return;
        }
        end = separator;
    }
    end[0] = '\\';
    end[1] = 0;
}

void Create_Levels(char (&existing)[Path_Size], const char *missing) {
    char *end = existing + std::strlen(existing);
    while (const char *separator = std::strchr(missing, '\\')) {
        const std::size_t length = static_cast<std::size_t>(separator + 1 - missing);
        std::memcpy(end, missing, length);
        end += length;
        *end = 0;
        CreateDirectoryA(existing, nullptr);
        missing = separator + 1;
    }
}

// --- deleting ---------------------------------------------------------------------------------------------

class FileSearch {
  public:
    explicit FileSearch(const char *pattern) : m_Handle(FindFirstFileA(pattern, &m_Entry)) {}
    ~FileSearch() {
        if (Found_Any()) FindClose(m_Handle);
    }
    FileSearch(const FileSearch &) = delete;
    FileSearch &operator=(const FileSearch &) = delete;

    bool Found_Any() const { return m_Handle != INVALID_HANDLE_VALUE; }
    bool Next() { return FindNextFileA(m_Handle, &m_Entry); }
    const char *Name() const { return m_Entry.cFileName; }
    bool Is_Directory() const { return m_Entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY; }
    bool Is_Link() const { return m_Entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT; }
    bool Is_Dots() const { return std::strcmp(Name(), ".") == 0 || std::strcmp(Name(), "..") == 0; }

  private:
    WIN32_FIND_DATAA m_Entry = {};
    HANDLE m_Handle;
};

// No forward slash, and not a bare drive, which could be its root or the current directory there.
bool Says_What_To_Delete(const char *path) {
    return !std::strchr(path, '/') && path[std::strlen(path) - 1] != ':';
}

int Zero_If(bool done) {
    return done ? 0 : Failed;
}

// False also for what has become a link to another place since it was looked at.
bool Enter_Directory(const char *path) {
    char here[MAX_PATH];
    return Machine_Change_Directory(path) == 0 && Machine_Get_Directory(here, sizeof here) &&
           strcmp_ncs(here, path) == 0;
}

int Clear_Current_Directory();

int Delete_Subdirectory(const char *path, const char *parent) {
    if (!Enter_Directory(path)) return Failed;
    const int result = Clear_Current_Directory();
    if (result != 0) return result;
    if (Machine_Change_Directory(parent) != 0) return Failed;
    return Zero_If(RemoveDirectoryA(path));
}

int Delete_Entry(const FileSearch &entry, const char *parent) {
    char path[Path_Size];
    if (!Join(path, parent, entry.Name())) return Failed;
    if (!entry.Is_Directory()) return Zero_If(DeleteFileA(path));
    if (entry.Is_Link()) return Zero_If(RemoveDirectoryA(path));
    return Delete_Subdirectory(path, parent);
}

// By full paths, so that whatever relative path led here leads nowhere else.
int Clear_Current_Directory() {
    char here[MAX_PATH], path[Path_Size];
    if (!Machine_Get_Directory(here, sizeof here) || !Copy_With_Backslash(path, here)) return Failed;
    FileSearch entry("*.*");
    if (!entry.Found_Any()) return 0;
    do {
        if (entry.Is_Dots()) continue;
        if (const int result = Delete_Entry(entry, path); result != 0) return result;
    } while (entry.Next());
    return Zero_If(GetLastError() == static_cast<DWORD>(ERROR_NO_MORE_FILES));
}

// Attributes are those of what a link leads to; a search gives the link's own.
bool Is_Link(const char *path) {
    char name[MAX_PATH] = {};
    std::size_t length = std::strlen(path);
    while (length > 0 && path[length - 1] == '\\') --length;
    if (length == 0 || length >= sizeof name) return false;
    std::memcpy(name, path, length);
    const FileSearch found(name);
    return found.Found_Any() && found.Is_Link();
}

bool Lies_In(const char *path, const char *tree) {
    std::size_t length = std::strlen(tree);
    if (Ends_In_Backslash(tree)) --length;
    char front[MAX_PATH] = {}, root[MAX_PATH] = {};
    if (length >= sizeof front || std::strlen(path) < length) return false;
    std::memcpy(front, path, length);
    std::memcpy(root, tree, length);
    return strcmp_ncs(front, root) == 0 && (path[length] == 0 || path[length] == '\\');
}

// Clears `path` unless it is or holds the current directory: then nothing is left to come back to.
int Clear_And_Come_Back(const char *path, const RememberedDirectory &before) {
    if (Machine_Change_Directory(path) != 0) return Failed;
    const RememberedDirectory tree;
    const bool may_go = tree.Is_Known() && !Lies_In(before.Path(), tree.Path());
    const int result = may_go ? Clear_Current_Directory() : Failed;
    return before.Go_Back() ? result : Failed;
}

// --- directories of Windows, and drives -------------------------------------------------------------------

enum class Base { None, Windows, System };

struct NumberedDirectory {
    long id;
    Base base;
    const char *suffix;
};

constexpr NumberedDirectory Numbered_Directories[] = {
    {10, Base::Windows, ""},           {11, Base::System, ""},          {12, Base::System, ""},
    {17, Base::Windows, "\\INF\\"},    {18, Base::Windows, "\\HELP\\"}, {20, Base::Windows, "\\FONTS\\"},
    {21, Base::System, "\\Viewers\\"}, {24, Base::None, "c:\\"},        {25, Base::Windows, ""},
    {30, Base::None, "c:\\"},
};

bool Get_Base(Base base, char (&path)[MAX_PATH]) {
    UINT length = 0;
    if (base == Base::Windows) length = GetWindowsDirectoryA(path, sizeof path);
    if (base == Base::System) length = GetSystemDirectoryA(path, sizeof path);
    return base == Base::None || (length > 0 && length < sizeof path);
}

constexpr char Disk_Root[] = "c:\\";

using FreeSpaceProc = BOOL (*)(LPCSTR folder, ULARGE_INTEGER *free_to_caller, ULARGE_INTEGER *size,
                               ULARGE_INTEGER *free);

bool Get_Free_Bytes(long long &bytes) {
    const FARPROC found = GetProcAddress(GetModuleHandleA("kernel32.dll"), "GetDiskFreeSpaceExA");
    if (!found) return false;
    ULARGE_INTEGER free_to_caller = {}, size = {}, free = {};
    if (!reinterpret_cast<FreeSpaceProc>(found)(Disk_Root, &free_to_caller, &size, &free)) return false;
    bytes = static_cast<long long>(free.QuadPart);
    return true;
}

} // namespace

void MakeRealFilePath(char *path) {
    if (!path) return;
    char *out = path;
    for (const char *in = path; *in; ++in) {
        *out++ = *in;
        if (in[0] == '\\' && in[1] == '\\') ++in;
    }
    *out = 0;
}

void DirCreate(const char *path) {
    const RememberedDirectory before;
    char existing[Path_Size], missing[Path_Size];
    if (!before.Is_Known() || !Copy_With_Backslash(missing, path)) return;
    std::memcpy(existing, missing, sizeof existing);
    Find_Existing_Level(existing, before);
    Strip_String(missing, existing);
    Create_Levels(existing, missing);
    before.Go_Back();
}

int ClearDir(const char *path) {
    char checked[Path_Size];
    if (!Copy_With_Backslash(checked, path) || !Says_What_To_Delete(path)) return Failed;
    if (Machine_Change_Directory(path) != 0) return Failed;
    return Clear_Current_Directory();
}

int DirDestroyAll(const char *path) {
    const RememberedDirectory before;
    if (!before.Is_Known() || !path || !*path || !Says_What_To_Delete(path)) return Failed;
    if (Is_Link(path)) return Zero_If(RemoveDirectoryA(path));
    if (Clear_And_Come_Back(path, before) != 0) return Failed;
    return Zero_If(RemoveDirectoryA(path));
}

long Get_Path_From_Directory_ID(long id, char *path) {
    if (id == -1 || id == 65535) return 0;
    if (!path) return ERROR_DIRECTORY;
    for (const NumberedDirectory &known : Numbered_Directories) {
        if (known.id != id) continue;
        char base[MAX_PATH] = {};
        const bool there = Get_Base(known.base, base);
        std::snprintf(path, Numbered_Path_Size, "%s%s", there ? base : "", there ? known.suffix : "");
        return 0;
    }
    return ERROR_DIRECTORY;
}

bool Check_Free_Disk_Space(unsigned long bytes) {
    long long free_bytes = 0;
    if (Get_Free_Bytes(free_bytes)) return free_bytes >= static_cast<long long>(bytes);
    DWORD sectors_per_cluster = 0, bytes_per_sector = 0, free_clusters = 0, clusters = 0;
    GetDiskFreeSpaceA(Disk_Root, &sectors_per_cluster, &bytes_per_sector, &free_clusters, &clusters);
    return sectors_per_cluster * bytes_per_sector * free_clusters >= bytes;
}

void Find_CDROM(char *root) {
    if (!root) return;
    char roots[1024] = {};
    *root = 0;
    GetLogicalDriveStringsA(255, roots);
    for (const char *drive = roots; *drive; drive += std::strlen(drive) + 1) {
        if (GetDriveTypeA(drive) != DRIVE_CDROM) continue;
        std::memcpy(root, drive, std::strlen(drive) + 1);
        return;
    }
}
