#include <platform/kernel/shared_block_header.h>

#include <platform/errors.h>

#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Magic[8] = {'K', 'M', 'S', 'H', 'A', 'R', 'E', 'D'};

std::uint64_t Thread_Numbers() {
    struct stat status;
    return stat("/proc/self/ns/pid", &status) == 0 ? status.st_ino : 0;
}

bool Read_Page(int descriptor, SharedBlockHeader &header) {
    return pread(descriptor, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header) &&
           std::memcmp(header.magic, Magic, sizeof Magic) == 0;
}

bool Is_Of_This_Layout(const SharedBlockHeader &header) {
    return header.layout_version == Shared_Block_Layout_Version && header.word_size == sizeof(void *);
}

} // namespace

// File names keep what is readable of the name; the rest goes as %XX. A long one ends in a number made of all
// its characters, and the header's full name decides.
std::string Block_File_Name(const std::string &name) {
    std::string file = "block-";
    for (const unsigned char c : name) {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           c == '-' || c == '_';
        char escaped[4] = {static_cast<char>(c), 0, 0, 0};
        if (!plain) std::snprintf(escaped, sizeof escaped, "%%%02X", c);
        file += escaped;
    }
    if (file.size() <= 200) return file;
    unsigned long long number = 14695981039346656037ull;
    for (const unsigned char c : name) number = (number ^ c) * 1099511628211ull;
    char tail[20];
    std::snprintf(tail, sizeof tail, "~%016llx", number);
    return file.substr(0, 180) + tail;
}

SharedBlockHeader New_Block_Header(SharedBlockKind kind, const std::string &name, std::uint32_t size) {
    SharedBlockHeader header = {};
    std::memcpy(header.magic, Magic, sizeof Magic);
    header.layout_version = Shared_Block_Layout_Version;
    header.word_size = sizeof(void *);
    header.kind = static_cast<std::uint32_t>(kind);
    header.size = size;
    std::memcpy(header.name, name.data(), name.size());
    header.thread_numbers = Thread_Numbers();
    return header;
}

bool Write_Block_Header(int descriptor, const SharedBlockHeader &header) {
    return pwrite(descriptor, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
}

bool Read_Block_Header(int descriptor, SharedBlockHeader &header) {
    return Read_Page(descriptor, header) && header.name[Longest_Block_Name] == 0 && Is_Of_This_Layout(header);
}

long Read_Held_Header(int descriptor, const SharedBlockHeader &wanted, SharedBlockHeader &header) {
    struct stat status;
    if (!Read_Page(descriptor, header) || fstat(descriptor, &status) != 0) return ERROR_FILE_CORRUPT;
    // Locks tell their owners by thread number: other numbers, other owners.
    if (!Is_Of_This_Layout(header) || header.thread_numbers != wanted.thread_numbers) {
        return ERROR_REVISION_MISMATCH;
    }
    if (header.name[Longest_Block_Name] != 0 || std::strcmp(header.name, wanted.name) != 0) {
        return ERROR_FILE_CORRUPT;
    }
    if (header.kind != wanted.kind) return ERROR_INVALID_HANDLE;
    if (header.size == 0 || status.st_size < static_cast<off_t>(Shared_Block_Contents_Offset) + header.size) {
        return ERROR_FILE_CORRUPT;
    }
    return NO_ERROR;
}
