#include <tools/own_memory.h>

#include <kelmara/foundation/memory.h>

#include <cstdlib>
#include <new>

namespace tools {

namespace {

// A size below 0 is one that no block has.
std::size_t Size_Of(long size) {
    return static_cast<unsigned long>(size);
}

void *Allocate(long size) {
    return std::malloc(Size_Of(size));
}

void *Allocate_Clear(long size) {
    return std::calloc(Size_Of(size), 1);
}

void *Reallocate(void *block, long size) {
    return std::realloc(block, size == 0 ? 1 : Size_Of(size)); // of 0 it would release the block
}

constexpr std::size_t Reserve_Size = std::size_t{1} << 20;
void *reserve = nullptr;

void Give_Reserve_Back() {
    std::free(reserve);
    reserve = nullptr;
    throw std::bad_alloc();
}

} // namespace

void Use_Own_Memory() {
    Set_Local_Memory_Procs(Allocate, Allocate_Clear, Reallocate, std::free);
    if (reserve == nullptr) reserve = std::malloc(Reserve_Size);
    std::set_new_handler(Give_Reserve_Back);
}

} // namespace tools
