// Shared memory: mappings without a file, and the views of them.

#include <platform/kernel/named_objects.h>

#include <platform/kernel.h>

#include <cerrno>
#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>

namespace {

constexpr DWORD View_Alignment = 65536;

class MappingObject final : public NamedObject {
  public:
    MappingObject(std::unique_ptr<SharedBlock> block)
        : NamedObject(ObjectKind::Mapping), block_(std::move(block)) {}

    SharedBlock &Block() { return *block_; }

    static NamedObject *Make(std::unique_ptr<SharedBlock> block) {
        return new MappingObject(std::move(block));
    }

  private:
    ~MappingObject() override = default;
    void Let_Name_Go() override { block_->Let_Name_Go_If_Last(SharedBlock::Patience::Give_Up); }
    void Last_Released() override {
        Forget_Name();
        delete this;
    }

    std::unique_ptr<SharedBlock> block_;
};

struct View {
    MappingObject *mapping; // counted: a view keeps its mapping, name and all
    std::size_t bytes;
};

struct Views {
    std::mutex lock;
    std::map<const void *, View> mapped;
};

Views &The_Views() {
    static Views *views = new Views;
    return *views;
}

LPVOID Fail(long error) {
    SetLastError(error);
    return nullptr;
}

} // namespace

extern "C" {

HANDLE CreateFileMappingA(HANDLE file, const SECURITY_ATTRIBUTES *, DWORD protection, DWORD size_high,
                          DWORD size_low, LPCSTR name) {
    if (file != INVALID_HANDLE_VALUE) return Fail(ERROR_INVALID_HANDLE);
    if (protection != PAGE_READWRITE || (size_high == 0 && size_low == 0))
        return Fail(ERROR_INVALID_PARAMETER);
    if (size_high != 0 || size_low > 0x70000000) return Fail(ERROR_COMMITMENT_LIMIT);
    bool fresh = false;
    return NamedObjects::Open(ObjectKind::Mapping, SharedBlockKind::Mapping, name, size_low, {},
                              MappingObject::Make, &fresh);
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low, DWORD bytes) {
    HandleUse use(mapping, ObjectKind::Mapping);
    if (!use) return Fail(ERROR_INVALID_HANDLE);
    auto &object = use.As<MappingObject>();
    if (offset_low % View_Alignment != 0) return Fail(ERROR_MAPPED_ALIGNMENT);
    const std::uint32_t size = object.Block().Size();
    if (offset_high != 0 || offset_low >= size || bytes > size - offset_low) return Fail(ERROR_ACCESS_DENIED);
    if (!(access & (FILE_MAP_COPY | FILE_MAP_READ | FILE_MAP_WRITE))) return Fail(ERROR_INVALID_PARAMETER);

    const std::size_t length = bytes ? bytes : size - offset_low;
    const bool private_copy = access == FILE_MAP_COPY;
    const int protection = PROT_READ | (private_copy || (access & FILE_MAP_WRITE) ? PROT_WRITE : 0);
    void *view =
        mmap(nullptr, length, protection, private_copy ? MAP_PRIVATE : MAP_SHARED,
             object.Block().Descriptor(), static_cast<off_t>(Shared_Block_Contents_Offset) + offset_low);
    if (view == MAP_FAILED) return Fail(ERROR_NOT_ENOUGH_MEMORY);
    Views &views = The_Views();
    std::lock_guard guard(views.lock);
    try {
        views.mapped[view] = {&object, length};
    } catch (const std::bad_alloc &) {
        munmap(view, length);
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    object.Retain();
    return view;
}

BOOL UnmapViewOfFile(const void *address) {
    View view;
    {
        Views &views = The_Views();
        std::lock_guard guard(views.lock);
        const auto found = views.mapped.find(address);
        if (found == views.mapped.end()) {
            SetLastError(ERROR_INVALID_ADDRESS);
            return FALSE;
        }
        view = found->second;
        views.mapped.erase(found);
        // Before the lock is given up: the address may be given to another view at once.
        munmap(const_cast<void *>(address), view.bytes);
    }
    view.mapping->Release();
    return TRUE;
}
}
