#include <tests/faults/operations/operation.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>
#include <kelmara/shared_state/mutex_holder.h>
#include <tests/faults/operations/plain_dialog.h>

#include <platform/errors.h>
#include <platform/kernel.h>

namespace {

// Holds the block, so that what is in it outlives an Initialize that fails.
struct Atoms {
    Atoms() { holder.Initialize("FAULTS"), holder.New_Atom(1, 1, "one", 4); }
    std::string State() {
        char data[4] = "-";
        holder.Get_Atom_Data(1, 1, data, 4);
        return data + std::to_string(table.Get_Atom_Data(1, 1, nullptr, 0));
    }
    CAtomTable holder, table;
};

struct Instance {
    PlainDialog window;
};

// Each of its own key, so that none is there before it.
char key[] = "KEY-0000000";
void New_Key() {
    for (char *digit = key + 10; ++*digit > '9'; --digit) *digit = '0';
}

} // namespace

Operations Shared_State_Operations() {
    const auto fresh = [] { return New_Key(), std::make_shared<Instance>(); };
    const auto registered = [] {
        auto instance = (New_Key(), std::make_shared<Instance>());
        First_Instance(key, "S", instance->window);
        return instance;
    };
    const auto state = [](Instance &) { return std::to_string(Instance_Available(key, "S")); };
    return {
        Row(
            "Initialize of atoms", 0, {Gives(ERROR_NOT_ENOUGH_MEMORY), Gives(-1)},
            [] { return std::make_shared<Atoms>(); }, [](Atoms &of) { return of.table.Initialize("FAULTS"); },
            [](Atoms &of) { return of.State(); }),
        Row(
            "New_Atom", 1, {Gives(-1)}, [] { return std::make_shared<Atoms>(); },
            [](Atoms &of) { return of.holder.New_Atom(1, 2, "two", 4); },
            [](Atoms &of) { return of.State(); }),
        Row(
            "First_Instance", 1, {Gives_Nothing}, fresh,
            [](Instance &of) { return First_Instance(key, "S", of.window); }, state),
        Row(
            "Instance_Available", 1, {Gives_Nothing}, registered,
            [](Instance &) { return Instance_Available(key, "S"); }, state),
        Row(
            "Update_Instance", 0, {}, registered,
            [](Instance &of) { return Update_Instance(key, of.window), 0; }, state),
    };
}
