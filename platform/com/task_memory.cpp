#include <platform/com.h>

#include <cstdlib>
#include <malloc.h>

namespace {

// Lasts as long as the process, whatever is counted.
class TaskMemory final : public IMalloc {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override {
        if (!out) return E_POINTER;
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IMalloc);
        *out = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }
    void *Alloc(ULONG size) override { return std::malloc(size ? size : 1); }
    void *Realloc(void *block, ULONG size) override {
        if (block && size == 0) return Free(block), nullptr;
        return std::realloc(block, size ? size : 1);
    }
    void Free(void *block) override { std::free(block); }
    ULONG GetSize(void *block) override { return block ? malloc_usable_size(block) : static_cast<ULONG>(-1); }
    int DidAlloc(void *) override { return -1; }
    void HeapMinimize() override {}
};

constinit TaskMemory task_memory;

} // namespace

extern "C" {

void *CoTaskMemAlloc(ULONG size) {
    return task_memory.Alloc(size);
}

void *CoTaskMemRealloc(void *block, ULONG size) {
    return task_memory.Realloc(block, size);
}

void CoTaskMemFree(void *block) {
    task_memory.Free(block);
}

HRESULT CoGetMalloc(DWORD context, IMalloc **out) {
    if (!out) return E_INVALIDARG;
    *out = context == 1 ? &task_memory : nullptr;
    return *out ? S_OK : E_INVALIDARG;
}
}
