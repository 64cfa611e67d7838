#pragma once
// Inside the library: a block of the memory services that goes at the end of its scope, unless it is handed
// over before. Null where there was no memory for it.

#include <kelmara/foundation/memory.h>

class OwnedBlock {
  public:
    /// Takes over a block, or none.
    explicit OwnedBlock(void *block) : m_Block(block) {}
    ~OwnedBlock() {
        if (m_Block) ds_free(m_Block);
    }
    OwnedBlock(const OwnedBlock &) = delete;
    OwnedBlock &operator=(const OwnedBlock &) = delete;

    char *Get() const { return static_cast<char *>(m_Block); }
    /// The block, which is the caller's from then on.
    char *Hand_Over() {
        char *const block = Get();
        m_Block = nullptr;
        return block;
    }

  private:
    void *m_Block;
};
