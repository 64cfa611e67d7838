#include <kelmara/foundation/new_delete.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/shared_state/log.h>

#include <new>

void *Allocate_Object(std::size_t size) noexcept {
    void *const block = ds_malloc(static_cast<long>(size));
    if (!block) [[unlikely]]
        Debug_Log_Entry("new failed");
    return block;
}

void Release_Object(void *block) noexcept {
    if (block) [[likely]]
        return ds_free(block);
    Debug_Log_Entry("deleting a NULL pointer!");
}

// The library's own; kelmara.map keeps them inside. A failed one gives null, which -fcheck-new makes the
// compiler test for, although these cannot be declared noexcept.
void *operator new(std::size_t size) {
    return Allocate_Object(size);
}
void *operator new[](std::size_t size) {
    return Allocate_Object(size);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return Allocate_Object(size);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return Allocate_Object(size);
}
void operator delete(void *block) noexcept {
    Release_Object(block);
}
void operator delete[](void *block) noexcept {
    Release_Object(block);
}
void operator delete(void *block, std::size_t) noexcept {
    Release_Object(block);
}
void operator delete[](void *block, std::size_t) noexcept {
    Release_Object(block);
}
void operator delete(void *block, const std::nothrow_t &) noexcept {
    Release_Object(block);
}
void operator delete[](void *block, const std::nothrow_t &) noexcept {
    Release_Object(block);
}
