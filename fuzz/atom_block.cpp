// The block of the atom table, with any of its bytes damaged under its users' hands: calls end, stay inside
// the block, and the header of the block decides whether somebody else can open it.

#include <fuzz/support/damaged_block.h>

#include <kelmara/shared_state/atom_table.h>

namespace {

CAtomTable &Table() {
    static CAtomTable *const table = new CAtomTable;
    return *table;
}

DamagedBlock &Block() {
    static DamagedBlock *const block = [] {
        REQUIRE(Table().Initialize("FUZZ") == 0);
        for (long id = 0; id < 5; ++id) REQUIRE(Table().New_Atom(id % 2, id, "data", 5) == id);
        return new DamagedBlock("DS-ATOM-TABLE-HI-MOM", Atom_Block_Size);
    }();
    return *block;
}

int visits; // of one input

// Prolonging a walk has an end of its own, which is long in coming.
bool Visit(long slot, long id, char *data, long user) {
    REQUIRE(slot >= 0 && slot < Atom_Capacity && data);
    if (++visits % 300 == 0) return false;
    const unsigned what = static_cast<unsigned>(user);
    if (what & 1) Table().New_Atom(2, id + 100, data, 300);
    if (what & 2) Table().Delete_Atom(slot);
    return what & 4;
}

void Use(FuzzInput &input) {
    const unsigned what = input.Byte();
    const long number = static_cast<signed char>(input.Byte());
    char data[Atom_Data_Size] = {};
    switch (what % 8) {
    case 0:
        Table().New_Atom(number % 3, number, data, sizeof data);
        return;
    case 1:
        Table().Delete_Atom(number % 3, number);
        return;
    case 2:
        Table().Delete_Atom(number);
        return;
    case 3:
        Table().Get_Atom_Data(number, data, sizeof data);
        return;
    case 4:
        Table().Set_Atom_Data(number % 3, number, data, sizeof data);
        return;
    case 5:
        Table().Iterate_Atoms(number % 3, Visit, static_cast<long>(what / 8));
        return;
    case 6:
        Block().Damage(input, 0);
        return;
    default:
        CAtomTable other;
        if (other.Initialize("FUZZ") == 0) other.New_Atom(1, number, data, 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    visits = 0;
    Block();
    while (input.More()) Use(input);
    Block().Put_Back();
    return 0;
}
