#pragma once
// The C runtime's heap as the library uses it beside the memory services: watched, and failing when told to.

#include <tests/support/replaced_import.h>

#include <cstddef>

/// One at a time. The blocks live on as they are when it ends.
class LibraryHeap {
  public:
    LibraryHeap();
    ~LibraryHeap();

    /// The n-th request from now (1 is the next) fails, and all after it if `for_ever`; 0: none does.
    void Fail(long nth, bool for_ever = false);
    /// Requests that failed since the last Fail.
    static long Refused();
    /// Of the blocks given out since the start and not released: those of that size, in order, and how many.
    static std::vector<char *> Blocks(std::size_t size);
    static long Live_Blocks();

  private:
    ReplacedImport malloc_, calloc_, realloc_, free_;
};
