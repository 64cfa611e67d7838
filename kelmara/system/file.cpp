#include <kelmara/system/file.h>

#include <kelmara/foundation/memory.h>

#include <platform/files.h>
#include <platform/kernel.h>
#include <platform/runtime.h>

#include <cstring>
#include <ctime>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct KMFileLayout {
    static_assert(offsetof(CKMFile, m_Stream) == 4 && offsetof(CKMFile, m_WorkName) == 8);
    static_assert(offsetof(CKMFile, m_TargetName) == 264 && offsetof(CKMFile, m_RollbackPending) == 520);
    static_assert(offsetof(CKMFile, m_DeleteOnClose) == 521 && offsetof(CKMFile, m_Writable) == 522);
};
#pragma GCC diagnostic pop

namespace {

constexpr int Temp_Path_Size = 255;

class MemoryBlock {
  public:
    // At least one byte, so that null always says that there is no memory.
    explicit MemoryBlock(long size) : m_Block(size < 0 ? nullptr : ds_malloc(size > 0 ? size : 1)) {}
    ~MemoryBlock() {
        if (m_Block) ds_free(m_Block);
    }
    MemoryBlock(const MemoryBlock &) = delete;
    MemoryBlock &operator=(const MemoryBlock &) = delete;
    void *Get() const { return m_Block; }

  private:
    void *m_Block;
};

enum class Making { Made, Taken, Failed };

// Looking, making and opening in one step: what has the name stays as it is, and nothing that could not be
// opened then stays behind.
Making Make_File(const char *path, FILE *&stream) {
    stream = Machine_Open_Stream(path, "w+bx");
    if (stream) return Making::Made;
    return GetLastError() == static_cast<DWORD>(ERROR_FILE_EXISTS) ? Making::Taken : Making::Failed;
}

template <std::size_t Size>
bool Fits(int length, const char (&)[Size]) {
    return length >= 0 && static_cast<std::size_t>(length) < Size;
}

bool Form_Temp_Name(char (&name)[256]) {
    char folder[Temp_Path_Size + 1] = {};
    const DWORD length = GetTempPathA(Temp_Path_Size, folder);
    if (length == 0 || length > Temp_Path_Size) return false;
    const DWORD tick = GetTickCount() + 1;
    return Fits(std::snprintf(name, sizeof name, "%s\\%lx.tmp", folder, tick), name);
}

bool Form_Work_Name(char (&name)[256], const char *path, unsigned counter) {
    const unsigned number = static_cast<unsigned>(std::time(nullptr)) + counter;
    return Fits(std::snprintf(name, sizeof name, "%s-%d", path, static_cast<int>(number)), name);
}

// Others may have the file open for a moment.
template <class Attempt>
bool Done_In_Time(Attempt attempt) {
    constexpr DWORD Patience = 1000; // milliseconds
    const DWORD start = GetTickCount();
    while (!attempt()) {
        if (GetLastError() != ERROR_SHARING_VIOLATION || GetTickCount() - start >= Patience) return false;
        Sleep(1);
    }
    return true;
}

} // namespace

CKMFile::CKMFile() = default;

CKMFile::CKMFile(const CKMFile &other) : CAutoDeleteableObject(other) {
    Copy_Closed(other);
}

CKMFile &CKMFile::operator=(const CKMFile &other) {
    if (this == &other) return *this;
    Close_If_Open();
    m_WorkName[0] = m_TargetName[0] = 0;
    m_DeleteOnClose = false;
    Copy_Closed(other);
    return *this;
}

void CKMFile::Copy_Closed(const CKMFile &other) {
    if (other.m_Stream) return;
    std::memcpy(m_WorkName, other.m_WorkName, sizeof m_WorkName);
    std::memcpy(m_TargetName, other.m_TargetName, sizeof m_TargetName);
    m_DeleteOnClose = other.m_DeleteOnClose;
}

CKMFile::~CKMFile() {
    Close_If_Open();
}

void CKMFile::Close_If_Open() {
    if (m_Stream) Close();
}

int CKMFile::Open(const char *path, bool write, bool create) {
    Close_If_Open();
    if (create) {
        FILE *made = Machine_Open_Stream(path, "wb");
        if (!made) return File_Not_Found;
        Machine_Close_Stream(made);
    }
    m_Stream = Machine_Open_Stream(path, write ? "r+b" : "rb");
    if (!m_Stream) return File_Not_Found;
    m_Writable = write;
    return 0;
}

int CKMFile::Open_Append(const char *path) {
    Close_If_Open();
    m_Stream = Machine_Open_Stream(path, "a+b");
    if (!m_Stream) return File_Not_Found;
    m_Writable = true;
    return 0;
}

// A name that led to no file is forgotten, so that no later Close deletes what somebody else has under it.
int CKMFile::Forget_Work_Name() {
    m_WorkName[0] = 0;
    return File_Not_Found;
}

int CKMFile::Open_Work_File(bool &mode) {
    mode = m_Writable = true;
    return 0;
}

int CKMFile::Open_Temp_File() {
    Close_If_Open();
    for (;; Sleep(1)) {
        if (!Form_Temp_Name(m_WorkName)) return Forget_Work_Name();
        const Making making = Make_File(m_WorkName, m_Stream);
        if (making == Making::Failed) return Forget_Work_Name();
        if (making == Making::Made) return Open_Work_File(m_DeleteOnClose);
    }
}

int CKMFile::Open_With_Rollback(const char *path) {
    Close_If_Open();
    if (!path) return File_Not_Found;
    for (unsigned counter = 0;; ++counter) {
        if (!Form_Work_Name(m_WorkName, path, counter)) return Forget_Work_Name();
        const Making making = Make_File(m_WorkName, m_Stream);
        if (making == Making::Failed) return Forget_Work_Name();
        if (making == Making::Made) break;
    }
    std::memcpy(m_TargetName, path, std::strlen(path) + 1);
    return Open_Work_File(m_RollbackPending);
}

void CKMFile::Close_Stream() {
    Machine_Close_Stream(m_Stream);
    m_Stream = nullptr;
    m_Writable = false;
}

void CKMFile::Delete_Work_File() {
    if (m_WorkName[0]) Done_In_Time([this] { return Machine_Remove(m_WorkName) == 0; });
    m_WorkName[0] = 0;
}

int CKMFile::Commit() {
    m_RollbackPending = false;
    if (!Done_In_Time([this] { return Machine_Rename(m_WorkName, m_TargetName) == 0; })) {
        Delete_Work_File();
        return Target_Exists;
    }
    m_WorkName[0] = 0;
    return 0;
}

int CKMFile::Close() {
    if (!m_Stream) return File_Invalid;
    Close_Stream();
    if (m_RollbackPending) return Commit();
    if (m_DeleteOnClose) Delete_Work_File();
    return 0;
}

int CKMFile::Rollback() {
    if (!m_Stream) return File_Invalid;
    Close_Stream();
    if (m_RollbackPending) {
        m_RollbackPending = false;
        Delete_Work_File();
    }
    return 0;
}

int CKMFile::Read(void *buffer, long size) {
    if (!m_Stream) return File_Invalid;
    if (buffer && size > 0 && std::fread(buffer, static_cast<std::size_t>(size), 1, m_Stream) == 1) return 0;
    return std::ferror(m_Stream) ? Read_Error : File_Corrupt;
}

int CKMFile::Write(const void *buffer, long size, bool flush) {
    if (!m_Stream || !m_Writable) return File_Invalid;
    const bool written =
        buffer && size > 0 && std::fwrite(buffer, static_cast<std::size_t>(size), 1, m_Stream) == 1;
    if (flush) std::fflush(m_Stream);
    return written ? 0 : File_Corrupt;
}

int CKMFile::GetLength() {
    if (!m_Stream) return 0;
    std::fpos_t position; // may lie beyond what a `long` can tell
    if (std::fgetpos(m_Stream, &position) != 0) return -1;
    const bool at_end = std::fseek(m_Stream, 0, SEEK_END) == 0;
    const long length = at_end ? std::ftell(m_Stream) : -1;
    std::fsetpos(m_Stream, &position);
    return static_cast<int>(length);
}

int CKMFile::MoveTo(int position, int origin) {
    static constexpr int Origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (!m_Stream || origin < 0 || origin > 2) return File_Invalid;
    return std::fseek(m_Stream, position, Origins[origin]);
}

int CKMFile::Read_Whole(void *block, long size, long position) {
    MoveTo(0, 0);
    const int result = Read(block, size);
    if (result == 0) std::fseek(m_Stream, position, SEEK_SET);
    return result;
}

// The content is read before the copy is opened, which may cut the very file that is being read.
int CKMFile::Duplicate(const char *path) {
    if (!m_Stream) return File_Invalid;
    if (m_Writable && std::fflush(m_Stream) != 0) return File_Corrupt;
    const long position = std::ftell(m_Stream);
    const long length = GetLength();
    const MemoryBlock content(length);
    const int read = content.Get() ? Read_Whole(content.Get(), length, position) : Out_Of_Memory;

    CKMFile copy;
    if (const int result = copy.Open(path, true, true); result != 0) {
        std::fseek(m_Stream, position, SEEK_SET);
        return result;
    }
    return read != 0 ? read : copy.Write(content.Get(), length, false);
}
