#include <tests/faults/operations/operation.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>
#include <kelmara/shared_state/log.h>
#include <kelmara/shared_state/mutex_holder.h>
#include <kelmara/shared_state/wait_window.h>
#include <tests/support/built_modules.h>
#include <tests/support/plain_dialog.h>
#include <tests/support/registry_verbs.h>

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

// Each of its own key, so that none is there before it.
char key[] = "KEY-0000000";

struct Instance {
    Instance() {
        for (char *digit = key + 10; ++*digit > '9'; --digit) *digit = '0';
    }
    std::string State() const { return std::to_string(Instance_Available(key, "S")); }
    PlainDialog window;
};

struct Registered : Instance {
    Registered() { First_Instance(key, "S", window); }
};

struct Lock {
    ~Lock() { CloseHandle(mutex); }
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, "faults");
};

/// Companions that are no companions, so that each call loads one anew.
struct Companions {
    Companions() {
        for (const char *name : Names) suite.Set(name, "z:" + Test_Module("plain"));
    }
    ~Companions() {
        for (const char *name : Names) RegDeleteValueA(suite, name);
    }
    static constexpr const char *Names[] = {"Log", "Wait"};
    const TestKey suite{"Software\\Dunmerit Software\\Kelmara", HKEY_LOCAL_MACHINE};
    void *client = nullptr;
};

} // namespace

Operations Shared_State_Operations() {
    return {
        Row<Atoms>("Initialize of atoms", 0, {Gives(ERROR_NOT_ENOUGH_MEMORY), Gives(-1)},
                   [](auto &of) { return of.table.Initialize("FAULTS"); }),
        Row<Atoms>("copy of atoms", 1, {Nothing},
                   [](auto &of) { return CAtomTable(of.holder).Get_Atom_Data(1, 1, nullptr, 0); }),
        Row<Atoms>("New_Atom", 1, {Gives(-1)}, [](auto &of) { return of.holder.New_Atom(1, 2, "two", 4); }),
        Row<Atoms>("Set_Atom_Data", 1, {Nothing},
                   [](auto &of) { return of.holder.Set_Atom_Data(1, 1, "new", 4); }),
        Row<Atoms>("Delete_Atom", 1, {Nothing}, [](auto &of) { return of.holder.Delete_Atom(1, 1); }),
        Row<Instance>("First_Instance", 1, {Nothing},
                      [](auto &of) { return First_Instance(key, "S", of.window); }),
        Row<Registered>("Instance_Available", 1, {Nothing},
                        [](auto &) { return Instance_Available(key, "S"); }),
        Row<Registered>("Update_Instance", 0, {}, [](auto &of) { Update_Instance(key, of.window); }),
        Row<Lock>("Get_Mutex", 0, {},
                  [](auto &of) { return Get_Mutex(of.mutex, 9), !ReleaseMutex(of.mutex); }),
        Row<Lock>("Acquire", 0, {}, [](auto &of) { CMutexHolder().Acquire(of.mutex, 9); }),
        Row<Companions>("Add_Message_Client", -1, {},
                        [](auto &of) { return Add_Message_Client(0, nullptr, nullptr, false, &of.client); }),
        Row<Companions>("Broadcast_Message", 0, {}, [](auto &) { Broadcast_Message(1, "text", 5); }),
        Row<Companions>("Std_Log_Entry", 0, {}, [](auto &) { Std_Log_Entry("%d", 1); }),
        Row<Companions>("Debug_Log_Entry", 0, {}, [](auto &) { Debug_Log_Entry("%d", 1); }),
        Row<Companions>("Open_Kelmara_Wait_Window", 0, {}, [](auto &) { Open_Kelmara_Wait_Window(); }),
    };
}
