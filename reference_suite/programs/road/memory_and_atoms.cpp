#include <reference_suite/programs/road/memory_and_atoms.h>

#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr char Table_Name[] = "ROAD-ATOMS";
constexpr long Greetings = 1; // a group
constexpr long Question = 1, Answer = 2, Afterwards = 3;

void Attach(CAtomTable &table) {
    const long result = table.Initialize(Table_Name);
    Require(result == 0, "a process can attach to the table of atoms");
}

long Count_Greetings(CAtomTable &table) {
    long count = 0;
    table.Iterate_Atoms(
        Greetings,
        [](long, long, char *, long user) {
            ++*reinterpret_cast<long *>(user);
            return true;
        },
        reinterpret_cast<long>(&count));
    return count;
}

// Runs inside an iteration, so with the table's lock held, and never comes back.
bool Say_So_And_Stay(long, long, char *, long) {
    std::printf("holding\n");
    std::fflush(stdout);
    for (;;) Sleep(1000);
}

} // namespace

void Make_First_Allocation() {
    Begin_Chapter("Memory");
    void *block = ds_malloc_clear(100);
    Require(block != nullptr, "100 bytes can be had");
    const HMODULE companion = GetModuleHandleA("C:\\Program Files\\Kelmara\\Bin\\kmmemory.dll");
    Require(companion != nullptr, "the first allocation has loaded the memory companion");
    char path[MAX_PATH] = {};
    GetModuleFileNameA(companion, path, sizeof path);
    Tell("The first allocation read \"Memory\" from the registry and loaded");
    Tell("  %s.", path);
    const auto live_blocks = reinterpret_cast<long (*)()>(GetProcAddress(companion, "m_live_blocks"));
    Require(live_blocks != nullptr, "the companion counts its blocks");
    Require(live_blocks() == 1, "the companion counts one live block");
    block = ds_realloc(block, 1000);
    Require(block != nullptr, "the block can grow to 1,000 bytes");
    ds_free(block);
    Require(live_blocks() == 0, "no block is live after it was freed");
    Tell("It gave 100 zero bytes, made 1,000 of them, took them back, and counts 0 live blocks.");
}

void Share_Atoms() {
    Begin_Chapter("Facts shared between processes");
    CAtomTable table;
    Attach(table);
    const char question[] = "Is anybody there?";
    const long slot = table.New_Atom(Greetings, Question, question, sizeof question);
    Require(slot == 0, "the first atom lies in slot 0");
    Tell("Process %lu keeps the atom (1, 1) in slot %ld: \"%s\"", GetCurrentProcessId(), slot, question);
    {
        Neighbour second("answer");
        const std::string heard = second.Hear();
        Require(second.Wait() == 0, "the second process ends well");
        Tell("Process %d, a second one, reads it: \"%s\"", second.Id(), heard.c_str());
        char answer[Atom_Data_Size] = {};
        Require(table.Get_Atom_Data(Greetings, Answer, answer, sizeof answer),
                "the second process left its atom");
        Tell("It left the atom (1, 2) and ended. The atom is still there: \"%s\"", answer);
    }
    {
        Neighbour second("hold");
        Require(second.Hear() == "holding", "the second process holds the table's lock");
        Tell("Process %d holds the lock of the table ...", second.Id());
        second.Kill();
        Require(second.Wait() == -9, "the second process was killed");
        Tell("... and is killed in the middle of it.");
    }
    const DWORD before = GetTickCount();
    const char afterwards[] = "life goes on";
    Require(table.New_Atom(Greetings, Afterwards, afterwards, sizeof afterwards) >= 0,
            "the lock of the killed process can be had");
    Tell("Process %lu takes the lock over after %lu ms, adds the atom (1, 3),", GetCurrentProcessId(),
         GetTickCount() - before);
    Require(Count_Greetings(table) == 3, "the group has three atoms");
    for (const long id : {Question, Answer, Afterwards}) {
        Require(table.Delete_Atom(Greetings, id), "an atom can be deleted");
    }
    Require(Count_Greetings(table) == 0, "the group is empty");
    Tell("counts three in their group, and deletes them.");
}

int Add_An_Answer() {
    CAtomTable table;
    Attach(table);
    char question[Atom_Data_Size + 1] = {};
    Require(table.Get_Atom_Data(Greetings, Question, question, Atom_Data_Size),
            "the first process's atom is there");
    std::printf("%s\n", question);
    char answer[100];
    std::snprintf(answer, sizeof answer, "Yes, process %lu.", GetCurrentProcessId());
    const long slot = table.New_Atom(Greetings, Answer, answer, static_cast<long>(std::strlen(answer)) + 1);
    return slot == 1 ? 0 : 1;
}

int Hold_The_Lock() {
    CAtomTable table;
    Attach(table);
    table.Iterate_Atoms(Greetings, Say_So_And_Stay, 0);
    return 1;
}
