#include <platform/kernel/named_objects.h>

#include <platform/kernel.h>
#include <platform/kernel/machine_state.h>

#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <strings.h>

namespace {

using OpenObjects = std::map<std::string, NamedObject *>; // by machine and name

struct Names {
    std::mutex lock;
    OpenObjects open;
};

Names &The_Names() {
    static Names *names = new Names;
    return *names;
}

const char *Without_Session(const char *name) {
    for (const char *session : {"Global\\", "Local\\"}) {
        if (strncasecmp(name, session, std::strlen(session)) == 0) return name + std::strlen(session);
    }
    return name;
}

HANDLE Fail(long error) {
    SetLastError(error);
    return nullptr;
}

// The handle takes over the caller's hold. Not to be called under the lock of names: an object that gets no
// handle goes at once, and takes its name out.
HANDLE Hand_Out(NamedObject *object, bool fresh) {
    const HANDLE handle = Open_Handle(object);
    if (handle) SetLastError(fresh ? NO_ERROR : ERROR_ALREADY_EXISTS);
    return handle;
}

} // namespace

// After the exit routines of all that stands above: what they left open would stay in memory until its name
// is asked for again.
void NamedObjects::Let_Names_Go() {
    Names &names = The_Names();
    std::lock_guard guard(names.lock);
    for (const auto &[key, object] : names.open) object->Let_Name_Go();
}

void NamedObject::Forget_Name() {
    if (key_.empty()) return;
    Names &names = The_Names();
    std::lock_guard guard(names.lock);
    if (const auto found = names.open.find(key_); found != names.open.end() && found->second == this) {
        names.open.erase(found);
    }
    key_.clear();
}

HANDLE NamedObjects::Open(ObjectKind kind, SharedBlockKind block_kind, const char *name, std::uint32_t size,
                          SharedBlockMaking making, Maker make, bool *fresh) try {
    if (!name || !*name) {
        SharedBlock::Opened opened = SharedBlock::Make_Private(size, making);
        if (!opened.block) return Fail(opened.error);
        NamedObject *object = make(std::move(opened.block));
        if (!object) return Fail(ERROR_COMMITMENT_LIMIT);
        *fresh = true;
        return Hand_Out(object, true);
    }

    name = Without_Session(name);
    if (std::strlen(name) >= static_cast<std::size_t>(MAX_PATH)) return Fail(ERROR_FILENAME_EXCED_RANGE);
    if (std::strchr(name, '\\')) return Fail(ERROR_PATH_NOT_FOUND);
    if (!*name) return Fail(ERROR_INVALID_NAME);

    const std::string folder = Shared_Memory_Folder_Path();
    if (folder.empty()) return Fail(Why_No_Machine(ERROR_PATH_NOT_FOUND));
    std::string key = folder + "/" + name;
    OpenObjects listing; // made first, so that nothing can fail once there is an object to list
    listing.emplace(key, nullptr);
    Names &names = The_Names();
    std::unique_lock guard(names.lock);
    if (const auto found = names.open.find(key); found != names.open.end()) {
        NamedObject *object = found->second;
        if (object->Kind() != kind) return Fail(ERROR_INVALID_HANDLE);
        if (object->Retain_If_Alive()) {
            guard.unlock();
            *fresh = false;
            return Hand_Out(object, false);
        }
    }
    SharedBlock::Opened opened = SharedBlock::Open(block_kind, name, size, making);
    if (!opened.block) return Fail(opened.error);
    NamedObject *object = make(std::move(opened.block));
    if (!object) return Fail(ERROR_COMMITMENT_LIMIT);
    names.open.insert(listing.extract(listing.begin())).position->second = object;
    object->key_.swap(key);
    guard.unlock();
    *fresh = opened.fresh;
    return Hand_Out(object, opened.fresh);
} catch (const std::bad_alloc &) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}
