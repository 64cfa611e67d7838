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

constexpr DWORD Longest_Wait = 1000;           // milliseconds
constexpr unsigned Long_Enough_To_Write = 100; // milliseconds
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

std::vector<Instance> Instances_Without_Window() {
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

bool Is_Among(const std::vector<Instance> &instances, const Instance &instance) {
    return std::any_of(instances.begin(), instances.end(), [&](const Instance &each) {
        return each.window == instance.window && each.key == instance.key && each.subkey == instance.subkey;
    });
}

// One that tells of no window yet is being written; by the second look that has come to its end.
std::vector<Instance> Stale_Instances() {
    std::vector<Instance> stale = Instances_Without_Window();
    const auto is_unfinished = [](const Instance &each) { return each.window == 0; };
    if (std::none_of(stale.begin(), stale.end(), is_unfinished)) return stale;
    Pause_Or_End(Long_Enough_To_Write);
    const std::vector<Instance> now = Instances_Without_Window();
    std::erase_if(stale, [&](const Instance &each) { return !Is_Among(now, each); });
    return stale;
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
        const std::string keys = "\"" + each.key + "\", \"" + each.subkey + "\"";
        findings.Add_Machine_Text(each.window == 0 ? "instances: " + keys + " has no window"
                                                   : "instances: the window of " + keys + " is gone");
        if (!can_mend) continue;
        Instance_Available(each.key.c_str(), each.subkey.c_str());
        if (!Is_Among(Instances_Without_Window(), each)) findings.Mended("taken out");
    }
    const auto seen =
        See_Mapping(Instance_Block_Name, sizeof(InstanceTable), [](const std::string &) { return false; });
    for (const std::string &fault : seen ? Read_Instances(seen->bytes).faults : std::vector<std::string>())
        findings.Add("instances: " + fault);
}

} // namespace tools
