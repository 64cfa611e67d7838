#pragma once
// The suite's memory companion: the routines that the library binds at its first allocation.
//
// A plain heap, the one of the process, that counts what is live. Sizes are in bytes. A size below 0 is never
// to be had; a size of 0 gives a block of its own. All routines may be called from any thread.

extern "C" {

/// Called once after the module is loaded, before any other routine. Nothing is left to do for it.
void Initialize();

/// Null when there is no memory.
void *m_alloc(long size);
/// The same, filled with zeroes.
void *m_alloc_clear(long size);
/// A null block makes one. Null when there is no memory, and the old block stands. A size of 0 keeps a block.
void *m_realloc(void *block, long size);
/// Null is ignored.
void m_free(void *block);

/// Blocks handed out and not yet given back, and all that were ever handed out.
long m_live_blocks();
long m_total_blocks();
}
