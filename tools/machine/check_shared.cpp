// What a check looks at in shared memory: blocks, offered classes, atoms and instances.

#include <tools/machine/findings.h>

#include <tools/interruption.h>
#include <tools/tables/machine_view.h>
#include <tools/tables/shared_images.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>

#include <platform/kernel.h>

#include <algorithm>
#include <set>

namespace tools {

namespace {

constexpr DWORD Longest_Wait = 1000; // milliseconds
constexpr std::string_view Lock_Ending = "-MUTEX";

/// Whether a table's lock can be had: one whose holder stands still is not waited for.
bool Is_To_Be_Had(const std::string &lock_name) {
    const HANDLE lock = CreateMutexA(nullptr, FALSE, lock_name.c_str());
    if (lock == nullptr) return false;
    const DWORD result = WaitForSingleObject(lock, Longest_Wait);
    const bool had = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    if (had) ReleaseMutex(lock);
    CloseHandle(lock);
    return had;
}

// Whoever attaches puts a change that was cut short in order.
bool Put_Atoms_In_Order() {
    for (const SharedBlockInUse &each : Shared_Blocks()) {
        const std::string name = each.block.name;
        if (each.block.kind != MACHINE_BLOCK_MUTEX || !name.ends_with(Lock_Ending) || !Is_To_Be_Had(name))
            continue;
        CAtomTable table;
        if (table.Initialize(name.substr(0, name.size() - Lock_Ending.size()).c_str()) != 0) continue;
        const auto seen = See_Mapping(Atom_Block_Name, Atom_Block_Size, Is_In_Change);
        if (seen && seen->is_steady) return true;
    }
    return false;
}

std::vector<Instance> Stale_Instances() {
    const auto seen =
        See_Mapping(Instance_Block_Name, sizeof(InstanceTable), [](const std::string &) { return false; });
    if (!seen) return {};
    std::set<unsigned long> windows;
    for (const MachineTopWindow &each : Top_Windows())
        windows.insert(reinterpret_cast<unsigned long>(each.window));
    std::vector<Instance> instances = Read_Instances(seen->bytes).instances;
    std::erase_if(instances, [&](const Instance &each) { return windows.contains(each.window); });
    return instances;
}

bool Is_Still_There(const Instance &instance) {
    const std::vector<Instance> left = Stale_Instances();
    return std::any_of(left.begin(), left.end(), [&](const Instance &each) {
        return each.window == instance.window && each.key == instance.key && each.subkey == instance.subkey;
    });
}

} // namespace

// What killed processes left is gone by now: a process that the library is loaded into throws it away.
void Check_Blocks(Findings &findings) {
    for (const SharedBlockInUse &each : Shared_Blocks()) {
        if (each.block.kind == MACHINE_BLOCK_UNKNOWN && !each.processes.empty())
            findings.Add(std::string(each.block.file) + ": not a shared block of this layout, open in " +
                         Programs_Of(each.processes));
    }
}

void Check_Classes(Findings &findings, bool repair) {
    std::vector<MachineClass> left = Offered_Classes();
    std::erase_if(left, [](const MachineClass &each) { return each.offered != FALSE; });
    const bool mended = repair && !left.empty() && Clear_Away_Ended_Classes();
    for (const MachineClass &each : left) {
        findings.Add("class " + std::string(each.class_id) + ": process " + std::to_string(each.process_id) +
                     ", which offered it, has ended");
        if (mended) findings.Mended("taken out of the list");
    }
}

void Check_Atoms(Findings &findings, bool repair) {
    const auto seen = See_Mapping(Atom_Block_Name, Atom_Block_Size, Is_In_Change);
    if (!seen) return;
    if (!seen->is_steady) {
        findings.Add("atom table: a change was cut short, or its process stands still");
        if (repair && Put_Atoms_In_Order()) findings.Mended("put in order");
        return;
    }
    for (const std::string &fault : Read_Atoms(seen->bytes).faults) findings.Add("atom table: " + fault);
}

void Check_Instances(Findings &findings, bool repair) {
    const std::vector<Instance> stale = Stale_Instances();
    const bool can_mend = repair && !stale.empty() && Is_To_Be_Had("InstanceMasterMutex");
    for (const Instance &each : stale) {
        findings.Add("instances: the window of \"" + each.key + "\", \"" + each.subkey + "\" is gone");
        if (!can_mend) continue;
        Instance_Available(each.key.c_str(), each.subkey.c_str());
        if (!Is_Still_There(each)) findings.Mended("taken out");
    }
    const auto seen =
        See_Mapping(Instance_Block_Name, sizeof(InstanceTable), [](const std::string &) { return false; });
    for (const std::string &fault : seen ? Read_Instances(seen->bytes).faults : std::vector<std::string>())
        findings.Add("instances: " + fault);
}

} // namespace tools
