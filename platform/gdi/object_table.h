#pragma once
// The process's objects of one kind behind their handles. Whoever calls holds the objects' lock for as long
// as what it found is used.

#include <cstdint>
#include <memory>
#include <unordered_map>

/// Of all tables. Locks of one thread nest.
class ObjectLock {
  public:
    ObjectLock();
    ~ObjectLock();
    ObjectLock(const ObjectLock &) = delete;
    ObjectLock &operator=(const ObjectLock &) = delete;
};

template <class Object>
class ObjectTable {
  public:
    static constexpr std::uintptr_t Number_Range = 0x3FFFF000; // of one table

    /// Handles are numbers beyond `first`.
    explicit ObjectTable(std::uintptr_t first) : first_(first), last_(first) {}

    /// May throw std::bad_alloc.
    void *Enter(std::unique_ptr<Object> object) {
        void *const handle = New_Handle();
        objects_.emplace(handle, std::move(object));
        return handle;
    }
    Object *Find(const void *handle) const {
        const auto found = objects_.find(handle);
        return found == objects_.end() ? nullptr : found->second.get();
    }
    bool Remove(const void *handle) { return objects_.erase(handle) != 0; }
    std::size_t Count() const { return objects_.size(); }
    auto begin() const { return objects_.begin(); }
    auto end() const { return objects_.end(); }

  private:
    void *New_Handle() {
        do {
            last_ = last_ < first_ + Number_Range ? last_ + 4 : first_ + 4;
        } while (objects_.contains(reinterpret_cast<void *>(last_)));
        return reinterpret_cast<void *>(last_);
    }

    std::unordered_map<const void *, std::unique_ptr<Object>> objects_;
    const std::uintptr_t first_;
    std::uintptr_t last_;
};
