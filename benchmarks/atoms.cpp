// What an atom costs beside the lock that guards it, and what an allocation costs beside the bare call.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/kelmara.h>

#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <string>
#include <sys/mman.h>

namespace {

/// The lock that a table's lock is made of, in memory that processes could share.
pthread_mutex_t *Robust_Shared_Lock() {
    void *memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    auto *lock = static_cast<pthread_mutex_t *>(memory);
    pthread_mutex_init(lock, &attributes);
    return lock;
}

void Lock_And_Unlock(pthread_mutex_t *lock) {
    pthread_mutex_lock(lock);
    pthread_mutex_unlock(lock);
}

void Measure_Allocation() {
    measure::Heading("memory", "the bound routine, called directly");
    void *(*const allocate)(long) = [](long size) { return std::malloc(static_cast<std::size_t>(size)); };
    void (*const release)(void *) = [](void *block) { std::free(block); };
    measure::Compare(
        "ds_malloc and ds_free, 24 bytes",
        [] {
            void *block = ds_malloc(measure::Hidden(24L));
            measure::Keep(block);
            ds_free(block);
        },
        [&] {
            void *block = measure::Hidden(allocate)(measure::Hidden(24L));
            measure::Keep(block);
            measure::Hidden(release)(block);
        },
        1.3);
}

void Measure_Atoms() {
    CAtomTable table;
    char data[Atom_Data_Size] = "an atom's data";
    if (table.Initialize("BENCHMARK") != 0 || table.New_Atom(1, 1, data, sizeof data) != 0) std::abort();
    pthread_mutex_t *lock = Robust_Shared_Lock();
    char source[Atom_Data_Size] = {}, copy[Atom_Data_Size];
    const auto two_locks_and_a_copy = [&] {
        Lock_And_Unlock(lock);
        Lock_And_Unlock(lock);
        std::memcpy(copy, measure::Hidden(source + 0), sizeof copy);
        measure::Keep(copy);
    };

    measure::Heading("atoms", "two robust lock pairs, one copy");
    const auto read_by_slot = [&] {
        table.Get_Atom_Data(measure::Hidden(0L), copy, sizeof copy);
        measure::Keep(copy);
    };
    measure::Compare("read an atom by slot, 256 bytes", read_by_slot, two_locks_and_a_copy, 1.0);

    measure::Heading("atoms", "the same, and a walk over 256 records");
    for (long id = 2; id <= 256; ++id) table.New_Atom(1, id, data, sizeof data);
    const auto read_newest_by_key = [&] {
        table.Get_Atom_Data(1, measure::Hidden(256L), copy, sizeof copy);
        measure::Keep(copy);
    };
    static AtomRecord records[Atom_Capacity];
    for (long slot = 0; slot < Atom_Capacity; ++slot) {
        records[slot].Group = 1;
        records[slot].Id = slot + 1;
        records[slot].Next = slot + 1;
    }
    const auto walk_and_the_same = [&] {
        long slot = 0;
        for (const long id = measure::Hidden(256L); records[slot].Group != 1 || records[slot].Id != id;) {
            slot = records[slot].Next;
        }
        measure::Keep(slot);
        two_locks_and_a_copy();
    };
    measure::Compare("read the newest of 256 by key", read_newest_by_key, walk_and_the_same, 1.1);
}

bool Count_Atom(long, long, char *, long user) {
    ++*reinterpret_cast<long *>(user);
    return true;
}

void Measure_Growth() {
    CAtomTable table;
    char copy[Atom_Data_Size] = {};
    if (table.Initialize("BENCHMARK-GROWTH") != 0) std::abort();
    measure::Growth_Heading("atoms");
    measure::Growth newest("read the newest of n atoms by key", 1.1),
        slot("read one of n atoms by slot", 0.1);
    measure::Growth anew("make and delete an atom beside n", 1.1), walk("iterate over n atoms", 1.1);
    long made = 0;
    for (const long size : {10L, 50L, 250L}) {
        while (made < size) table.New_Atom(2, ++made, copy, sizeof copy);
        newest.At(size,
                  [&] { measure::Keep(table.Get_Atom_Data(2, measure::Hidden(size), copy, sizeof copy)); });
        slot.At(size, [&] { measure::Keep(table.Get_Atom_Data(measure::Hidden(7L), copy, sizeof copy)); });
        anew.At(size, [&] {
            table.New_Atom(3, 1, copy, sizeof copy);
            table.Delete_Atom(3, 1);
        });
        walk.At(size, [&] {
            long count = 0;
            table.Iterate_Atoms(2, Count_Atom, reinterpret_cast<long>(&count));
            measure::Keep(count);
        });
    }
    for (; made > 0; --made) table.Delete_Atom(2, made);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    Measure_Allocation();
    Measure_Growth();
    Measure_Atoms();
    return 0;
}
