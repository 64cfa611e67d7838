#include <reference_suite/components/stored_lines.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/system/reg_master.h>

#include <platform/errors.h>

#include <cstring>
#include <memory>

namespace {

constexpr long First_Capacity = 512;
constexpr int Attempts = 8; // to read a value that others make longer meanwhile

using Block = std::unique_ptr<char, decltype([](char *block) { ds_free(block); })>;

long Query(HKEY key, const char *value, DWORD *type, char *bytes, DWORD *size) {
    return RegQueryValueExA(key, value, nullptr, type, reinterpret_cast<BYTE *>(bytes), size);
}

} // namespace

long StoredLines::Load(const char *key, const char *value) {
    if (const long result = m_Lines.Initialize(First_Capacity)) return result;
    CRegMaster registry;
    if (!registry.OpenKey(HKEY_LOCAL_MACHINE, key)) return ERROR_FILE_NOT_FOUND;
    long result = ERROR_MORE_DATA;
    for (int i = 0; i < Attempts && result == ERROR_MORE_DATA; ++i) {
        DWORD type = REG_NONE, size = 0;
        result = Query(registry.GetKey(), value, &type, nullptr, &size);
        if (result == ERROR_FILE_NOT_FOUND) return 0;
        if (result != ERROR_SUCCESS) return result;
        if (type != REG_MULTI_SZ || size > Largest + 1) return ERROR_INVALID_DATA;
        const Block block(static_cast<char *>(ds_malloc(static_cast<long>(size) + 1)));
        if (!block) return E_OUTOFMEMORY;
        result = Query(registry.GetKey(), value, &type, block.get(), &size);
        if (result == ERROR_SUCCESS && type != REG_MULTI_SZ) return ERROR_INVALID_DATA;
        if (result == ERROR_SUCCESS) result = Take(block.get(), static_cast<long>(size));
    }
    return result;
}

// Up to the empty line that ends them. The last one may lack its terminator.
long StoredLines::Take(const char *bytes, long size) {
    for (const char *line = bytes, *end = bytes + size; line < end && *line;) {
        const auto length = static_cast<long>(strnlen(line, static_cast<std::size_t>(end - line)));
        if (m_Lines.Write(line, length) != 0 || m_Lines.Write("\0", 1) != 0) return E_OUTOFMEMORY;
        line += length + 1;
    }
    return 0;
}

long StoredLines::Store(const char *key, const char *value) {
    CRegMaster registry;
    if (!registry.OpenKey(HKEY_LOCAL_MACHINE, key)) return ERROR_FILE_NOT_FOUND;
    const long size = m_Lines.Get_End_Of_Data();
    if (m_Lines.Move_To(size) != 0 || m_Lines.Write("\0", 1) != 0) return E_OUTOFMEMORY;
    // Not SetRegEntry, which flushes without looking: a disk tells its failure once.
    const auto *const bytes = reinterpret_cast<const BYTE *>(static_cast<const char *>(m_Lines));
    const bool stored = RegSetValueExA(registry.GetKey(), value, 0, REG_MULTI_SZ, bytes,
                                       static_cast<DWORD>(size) + 1) == ERROR_SUCCESS;
    m_Lines.Move_To(size);
    m_Lines.Delete(1);
    return stored && RegFlushKey(registry.GetKey()) == ERROR_SUCCESS ? 0 : ERROR_WRITE_FAULT;
}

const char *StoredLines::Next(const char *line) const {
    const char *const next = line ? line + std::strlen(line) + 1 : static_cast<const char *>(m_Lines);
    return next == End() ? nullptr : next;
}

const char *StoredLines::End() const {
    return static_cast<const char *>(m_Lines) + m_Lines.Get_End_Of_Data();
}

const char *StoredLines::Line(const char *name) const {
    const std::size_t length = std::strlen(name);
    for (const char *line = Next(nullptr); line; line = Next(line)) {
        if (std::strncmp(line, name, length) == 0 && line[length] == '=') return line;
    }
    return nullptr;
}

const char *StoredLines::Find(const char *name) const {
    const char *const line = Line(name);
    return line ? line + std::strlen(name) + 1 : nullptr;
}

long StoredLines::Set(const char *name, const char *text) {
    const CSafeStr line(name);
    line += "=";
    line += text;
    const char *const bytes = line;
    const auto size = static_cast<long>(std::strlen(bytes)) + 1;
    if (m_Lines.Get_End_Of_Data() + size > Largest) return ERROR_NOT_ENOUGH_QUOTA;
    const bool there = Line(name);
    m_Lines.Move_To(m_Lines.Get_End_Of_Data());
    if (const long result = m_Lines.Write(bytes, size)) return result;
    if (there) Remove(name); // the first of two, which is the old one
    return 0;
}

void StoredLines::Remove(const char *name) {
    if (const char *const line = Line(name)) Cut(line);
}

void StoredLines::Cut(const char *line) {
    m_Lines.Move_To(static_cast<long>(line - static_cast<const char *>(m_Lines)));
    m_Lines.Delete(static_cast<long>(std::strlen(line)) + 1);
}
