#include <platform/files.h>
#include <platform/files/attributes.h>
#include <platform/files/folder_entries.h>
#include <platform/files/host_error.h>
#include <platform/files/name_pattern.h>
#include <platform/files/paths.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/handle_table.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <vector>

namespace {

struct Entry {
    std::string windows_name, host_name;
};

// What is left of a search.
class FindObject final : public KernelObject {
  public:
    FindObject(std::string folder, std::vector<Entry> entries)
        : KernelObject(ObjectKind::Find), folder_(std::move(folder)), entries_(std::move(entries)) {}

    /// False when there is none left.
    long Next(WIN32_FIND_DATAA &data);

  private:
    ~FindObject() override = default;

    std::mutex lock_;
    const std::string folder_;
    const std::vector<Entry> entries_;
    std::size_t next_ = 0;
};

FILETIME File_Time(const struct statx_timestamp &time) {
    constexpr long long Seconds_From_1601_To_1970 = 11644473600;
    const long long ticks = (time.tv_sec + Seconds_From_1601_To_1970) * 10000000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

DWORD Entry_Attributes(const std::string &path, const struct statx &own) {
    if (!S_ISLNK(own.stx_mode)) return Attributes_Of(own.stx_mode);
    struct stat target;
    if (stat(path.c_str(), &target) != 0) return FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_REPARSE_POINT;
    return Attributes_Of(target.st_mode) | FILE_ATTRIBUTE_REPARSE_POINT;
}

bool Is_Gone(int code) {
    return code == ENOENT || code == ENOTDIR || code == ESTALE;
}

// ERROR_FILE_NOT_FOUND when the entry is gone.
long Describe(const std::string &folder, const Entry &entry, WIN32_FIND_DATAA &data) {
    const std::string path = folder + '/' + entry.host_name;
    struct statx status;
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
        return Is_Gone(errno) ? ERROR_FILE_NOT_FOUND : Error_Of_Errno(errno);
    }
    const bool has_birth = status.stx_mask & STATX_BTIME;
    const unsigned long long size = S_ISREG(status.stx_mode) ? status.stx_size : 0;
    data = {};
    data.dwFileAttributes = Entry_Attributes(path, status);
    data.ftCreationTime = File_Time(has_birth ? status.stx_btime : status.stx_mtime);
    data.ftLastAccessTime = File_Time(status.stx_atime);
    data.ftLastWriteTime = File_Time(status.stx_mtime);
    data.nFileSizeHigh = static_cast<DWORD>(size >> 32);
    data.nFileSizeLow = static_cast<DWORD>(size);
    std::memcpy(data.cFileName, entry.windows_name.data(),
                std::min(entry.windows_name.size(), sizeof data.cFileName - 1));
    return NO_ERROR;
}

// Entries that are gone meanwhile are passed over.
long FindObject::Next(WIN32_FIND_DATAA &data) {
    const std::lock_guard guard(lock_);
    while (next_ < entries_.size()) {
        const long error = Describe(folder_, entries_[next_++], data);
        if (error != ERROR_FILE_NOT_FOUND) return error;
    }
    return ERROR_NO_MORE_FILES;
}

bool Is_Dots(std::string_view name) {
    return name == "." || name == "..";
}

// "." and ".." first, then by capital letters.
bool Comes_Before(const Entry &left, const Entry &right) {
    if (Is_Dots(left.windows_name) != Is_Dots(right.windows_name)) return Is_Dots(left.windows_name);
    const auto Smaller = [](char a, char b) {
        return Upper_Ansi(static_cast<unsigned char>(a)) < Upper_Ansi(static_cast<unsigned char>(b));
    };
    const std::string &a = left.windows_name, &b = right.windows_name;
    if (std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), Smaller)) return true;
    if (std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(), Smaller)) return false;
    return left.host_name < right.host_name;
}

// What a search is for: a folder, with the pattern of its entries or one of their names.
struct Search {
    std::string folder; // on the host
    std::vector<Entry> entries;
};

long Read_Folder(const HostPlace &place, const NamePattern &pattern, Search &search) {
    const OpenFolder folder = Open_Folder(place.host_path);
    if (!folder) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : Error_Of_Errno(errno);
    for (;;) {
        errno = 0;
        const dirent *found = readdir(folder.get());
        if (!found) break;
        const bool dots = Is_Dots(found->d_name);
        if (dots && place.is_root) continue;
        Entry entry = {dots ? found->d_name : Windows_Name_Of(found->d_name), found->d_name};
        if (pattern.Matches(entry.windows_name)) search.entries.push_back(std::move(entry));
    }
    if (errno != 0) return Error_Of_Errno(errno);
    std::sort(search.entries.begin(), search.entries.end(), Comes_Before);
    search.folder = place.host_path;
    return NO_ERROR;
}

long Search_For_Pattern(std::string_view folder, std::string_view pattern, Search &search) {
    if (pattern.find_first_of("<>\"|:") != std::string_view::npos) return ERROR_INVALID_NAME;
    HostPlace place;
    const std::string path(folder.empty() ? "." : folder);
    if (const long error = Find_Place(path.c_str(), place); error != NO_ERROR) return error;
    if (place.windows_path.size() + pattern.size() + 1 >= MAX_PATH) return ERROR_PATH_NOT_FOUND;
    struct stat status;
    if (stat(place.host_path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
    return Read_Folder(place, NamePattern(pattern), search);
}

long Search_For_Name(LPCSTR path, Search &search) {
    HostPlace place;
    if (const long error = Find_Place(path, place); error != NO_ERROR) return error;
    struct stat status;
    if (lstat(place.host_path.c_str(), &status) != 0) {
        return place.means_folder ? ERROR_PATH_NOT_FOUND : Error_At(place.host_path, errno);
    }
    if (place.is_root || place.means_folder) return ERROR_FILE_NOT_FOUND;
    const std::size_t separator = place.host_path.rfind('/');
    const std::string name = place.host_path.substr(separator + 1);
    search.folder = place.host_path.substr(0, separator);
    search.entries.push_back({Windows_Name_Of(name), name});
    return NO_ERROR;
}

long Begin_Search(LPCSTR path, Search &search) {
    const std::string_view whole = path ? path : "";
    if (whole.size() > Longest_Path_Text) return ERROR_FILENAME_EXCED_RANGE;
    const std::size_t separator = whole.find_last_of("\\/:");
    const std::size_t split = separator == std::string_view::npos ? 0 : separator + 1;
    const std::string_view name = whole.substr(split);
    if (!NamePattern::Has_Wildcards(name)) return Search_For_Name(path, search);
    return Search_For_Pattern(whole.substr(0, split), name, search);
}

using FindHold = std::unique_ptr<FindObject, decltype([](FindObject *find) { find->Release(); })>;

long Begin_Find(LPCSTR path, FindHold &find, WIN32_FIND_DATAA &first) {
    Search search;
    if (const long error = Begin_Search(path, search); error != NO_ERROR) return error;
    find.reset(new FindObject(std::move(search.folder), std::move(search.entries)));
    const long error = find->Next(first);
    return error == ERROR_NO_MORE_FILES ? ERROR_FILE_NOT_FOUND : error;
}

} // namespace

extern "C" {

HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA *data) {
    FindHold find;
    WIN32_FIND_DATAA first;
    const long error =
        Code_Of([&] { return data ? Begin_Find(pattern, find, first) : ERROR_INVALID_PARAMETER; });
    if (!Succeed_Or_Tell(error)) return INVALID_HANDLE_VALUE;
    const HANDLE handle = Open_Handle(find.release());
    if (!handle) return INVALID_HANDLE_VALUE;
    *data = first;
    return handle;
}

BOOL FindNextFileA(HANDLE find, WIN32_FIND_DATAA *data) {
    const HandleUse use(find, ObjectKind::Find);
    if (!use) return Succeed_Or_Tell(ERROR_INVALID_HANDLE);
    if (!data) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    return Succeed_Or_Tell(Code_Of([&] { return use.As<FindObject>().Next(*data); }));
}

BOOL FindClose(HANDLE find) {
    return Succeed_Or_Tell(Close_Handle_Of_Kind(find, ObjectKind::Find) ? NO_ERROR : ERROR_INVALID_HANDLE);
}
}
