// Facts that all processes of the machine share, a lock of theirs, and the log.
#include <kelmara/kelmara.h>

#include <platform/kernel.h>

#include <cstdio>

static bool Show(long slot, long id, char *data, long) {
    std::printf("atom %ld in slot %ld: %s\n", id, slot, data);
    return true; // go on
}

int main() {
    CAtomTable atoms;
    if (atoms.Initialize("SHARED-STATE-EXAMPLE") != 0) return 1;
    atoms.New_Atom(7, 1, "idle", 5);
    atoms.New_Atom(7, 2, "busy", 5);
    std::printf("the same key again: %ld\n", atoms.New_Atom(7, 1, "idle", 5));
    atoms.Iterate_Atoms(7, Show, 0);

    HANDLE mutex = CreateMutexA(nullptr, FALSE, "SHARED-STATE-EXAMPLE-LOCK");
    {
        CMutexHolder lock;
        lock.Acquire(mutex, 1000); // milliseconds
        std::printf("held: %s\n", lock.Is_Held() ? "yes" : "no");
    } // released here
    CloseHandle(mutex);

    Std_Log_Entry("the example has run %d time", 1); // to log.html, through the log companion
    atoms.Delete_Atom(7, 1);
    atoms.Delete_Atom(7, 2);
    return 0;
}
