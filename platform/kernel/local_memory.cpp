#include <platform/local_memory.h>

#include <platform/kernel/fork_lock.h>
#include <platform/kernel/outcome.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>

namespace {

struct LocalBlock {
    std::unique_ptr<void, decltype([](void *bytes) { std::free(bytes); })> bytes;
    UINT size = 0;
};

struct LocalHeap {
    ForkLock lock;
    std::map<HLOCAL, LocalBlock> blocks;
};

LocalHeap &The_Local_Heap() {
    static LocalHeap *heap = new LocalHeap;
    return *heap;
}

HLOCAL Allocate(bool cleared, UINT size) {
    const std::size_t room = size ? size : 1;
    LocalBlock block{decltype(LocalBlock::bytes)(cleared ? std::calloc(1, room) : std::malloc(room)), size};
    if (!block.bytes) throw std::bad_alloc();
    const HLOCAL handle = block.bytes.get();
    LocalHeap &heap = The_Local_Heap();
    const std::lock_guard guard(heap.lock);
    heap.blocks.emplace(handle, std::move(block));
    return handle;
}

} // namespace

extern "C" {

HLOCAL LocalAlloc(UINT flags, UINT size) {
    if ((flags & ~LMEM_ZEROINIT) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Within_Memory(HLOCAL{}, [=] { return Allocate(flags != 0, size); });
}

UINT LocalSize(HLOCAL block) {
    return Within_Memory(0u, [=] {
        LocalHeap &heap = The_Local_Heap();
        const std::lock_guard guard(heap.lock);
        const auto found = heap.blocks.find(block);
        if (found != heap.blocks.end()) return found->second.size;
        SetLastError(ERROR_INVALID_HANDLE);
        return 0u;
    });
}

HLOCAL LocalFree(HLOCAL block) {
    if (!block) return nullptr;
    return Within_Memory(block, [=]() -> HLOCAL {
        LocalHeap &heap = The_Local_Heap();
        const std::lock_guard guard(heap.lock);
        if (heap.blocks.erase(block) != 0) return nullptr;
        SetLastError(ERROR_INVALID_HANDLE);
        return block;
    });
}
}
