#pragma once
// Inside the library: where a text stands on its way between a window and a client. Up to 256 bytes lie on
// the stack; more come from the memory services, and go back at the end of the scope.

#include <kelmara/foundation/owned_block.h>

class TransferBuffer {
  public:
    /// Cleared, of `size` bytes or 256.
    explicit TransferBuffer(long size)
        : m_Size(size > Local_Size ? size : Local_Size),
          m_Block(size > Local_Size ? ds_malloc_clear(size) : nullptr) {}
    TransferBuffer(const TransferBuffer &) = delete;
    TransferBuffer &operator=(const TransferBuffer &) = delete;

    /// Null without memory.
    char *Get() { return m_Size > Local_Size ? m_Block.Get() : m_Local; }
    /// Ends the text, whatever was written to it.
    void Terminate() { Get()[m_Size - 1] = 0; }

  private:
    static constexpr long Local_Size = 256;

    char m_Local[Local_Size] = {};
    long m_Size;
    OwnedBlock m_Block;
};
