#pragma once
// Names of mutexes, events and mappings, and the objects that this process has open under them.

#include <platform/kernel/handle_table.h>
#include <platform/kernel/shared_block.h>

#include <string>

/// An object with a block of shared memory behind it. All handles of one process to a name share one object.
class NamedObject : public KernelObject {
  public:
    using KernelObject::KernelObject;

  protected:
    /// When the process ends: the name goes unless another process has it. The object stays usable.
    virtual void Let_Name_Go() = 0;
    /// Takes the object out of the process's names. To be called when it goes, before its block does.
    void Forget_Name();

  private:
    friend class NamedObjects;
    std::string key_; // empty for an object without a name
};

class NamedObjects {
  public:
    using Maker = NamedObject *(*)(std::unique_ptr<SharedBlock> block);

    /// Finds or makes the object called `name` (null: one without a name) and opens a handle to it. `make`
    /// turns a freshly opened block into an object, null when it cannot. Sets the last error: 0, or
    /// ERROR_ALREADY_EXISTS, or why there is no handle.
    static HANDLE Open(ObjectKind kind, SharedBlockKind block_kind, const char *name, std::uint32_t size,
                       SharedBlockMaking making, Maker make, bool *fresh);

    /// Once more when the process ends, by itself.
    [[gnu::destructor]] static void Let_Names_Go();
};
