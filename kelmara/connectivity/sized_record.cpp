#include <kelmara/connectivity/sized_record.h>

#include <platform/kernel.h>

#include <cstring>

void *SizedRecord::Make(unsigned long size, const char *label) {
    if (m_Block) {
        m_Size = LocalSize(m_Block);
        if (m_Size == 0) return nullptr;
        if (m_Size < size) m_Block = LocalFree(m_Block);
    }
    if (m_Block) {
        std::memset(m_Block, 0, m_Size);
    } else {
        m_Block = LocalAlloc(LMEM_ZEROINIT, size);
        m_Size = m_Block ? size : 0;
    }
    if (m_Block)
        std::memcpy(m_Block, &m_Size, sizeof m_Size);
    else
        OutputDebugStringA(label);
    return m_Block;
}

bool RecordText::Equals(const char *text) const {
    return std::strlen(text) == length && std::memcmp(start, text, length) == 0;
}

RecordText Text_In_Record(const void *record, unsigned long size, unsigned long offset) {
    if (offset >= size) return {"", 0};
    const char *const start = static_cast<const char *>(record) + offset;
    const void *const end = std::memchr(start, 0, size - offset);
    return {start, end ? static_cast<unsigned long>(static_cast<const char *>(end) - start) : size - offset};
}
