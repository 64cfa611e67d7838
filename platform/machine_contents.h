#pragma once
// What is on the machine, for whoever looks at it from outside: the blocks that its processes share, their
// windows, the classes that they offer, and how the registry's file stands.
//
// Looking makes nothing, waits for nobody and takes no lock; it takes no part in the machine. What is seen
// can have changed by the time that it is told. Visitors answer false to end their walk, and call nothing of
// this header. Calls that fail tell why by GetLastError. All may be made from any thread.

#include <platform/types.h>

inline constexpr UINT MACHINE_BLOCK_UNKNOWN = 0; // a file that is no block of this layout
inline constexpr UINT MACHINE_BLOCK_MUTEX = 1;
inline constexpr UINT MACHINE_BLOCK_MAPPING = 2;
inline constexpr UINT MACHINE_BLOCK_INTERNAL = 3; // the machine's own
inline constexpr UINT MACHINE_BLOCK_EVENT = 4;

/// A named block together with one process that has it open.
struct MachineBlock {
    UINT kind;
    DWORD size;       // bytes of its contents
    DWORD process_id; // 0: nobody has it, a killed process left it
    char name[264];   // as it was given; empty for an unknown one
    char file[512];   // of the host
};

/// A window without a parent.
struct MachineTopWindow {
    HWND window;
    DWORD process_id;
    DWORD thread_id;
    DWORD state; // WS_VISIBLE, WS_MINIMIZE, WS_MAXIMIZE
    BOOL foreground;
    char window_class[64]; // its first 63 characters
    char title[512];       // its first 511
};

/// A class in the list of those that running programs offer.
struct MachineClass {
    char class_id[40]; // "{...}"
    DWORD process_id;  // that listed it
    BOOL offered;      // FALSE: whoever offered it has ended
    char file[512];    // of the host, its entry
};

struct MachineRegistry {
    DWORD file_size;
    DWORD live_size;  // of what the file would have if it were written anew
    DWORD damaged;    // bytes in front of the end that are in no whole record, and are passed over
    DWORD torn;       // bytes behind the last whole record: being written, or left by a killed writer
    DWORD generation; // how often it was written anew
    DWORD keys;
    DWORD values;
    BOOL left_aside; // a file written aside is there: being written, or left by a killed writer
};

extern "C" {

using MachineBlockVisitor = bool (*)(const MachineBlock *block, void *context);
/// A block comes once for each process that has it open; in the order of the names of their files.
PLATFORM_API BOOL Visit_Machine_Blocks(MachineBlockVisitor visit, void *context);

/// Copies the first `size` bytes at most of a mapping that some process has open: how many. Others may write
/// meanwhile. 0 when nobody has it open (ERROR_FILE_NOT_FOUND), or it is no mapping of this layout.
PLATFORM_API DWORD Copy_Machine_Mapping(LPCSTR name, void *out, DWORD size);

using MachineWindowVisitor = bool (*)(const MachineTopWindow *window, void *context);
/// Without those whose thread has ended; in the order of the places that their handles tell.
PLATFORM_API BOOL Visit_Machine_Windows(MachineWindowVisitor visit, void *context);

using MachineClassVisitor = bool (*)(const MachineClass *listed, void *context);
/// Those of one class in the order in which they were listed. Nobody is connected to.
PLATFORM_API BOOL Visit_Machine_Classes(MachineClassVisitor visit, void *context);

/// ERROR_FILE_NOT_FOUND when nothing was ever stored, ERROR_BADDB for what is no registry of this machine.
PLATFORM_API LONG Look_At_Registry(MachineRegistry *registry);

// --- these take part --------------------------------------------------------------------------------------

/// Writes what is in the registry now as the registry of the machine that is being made in `host_folder`,
/// on the disk when it returns. Nobody is waited for, and nobody waits. A code of errors.h, with nothing
/// written.
PLATFORM_API LONG Copy_Registry(LPCSTR host_folder);

/// Throws away what killed writers left in and beside the registry's file. A file with damage is written anew
/// without it; the old one then stays beside it, as "registry.log.damaged-" and its generation, with a
/// further
/// "-2" and so on where another file has that name. Writers wait meanwhile. A code of errors.h.
PLATFORM_API LONG Mend_Registry();

/// Takes the entries of classes that nobody offers any more out of their list.
PLATFORM_API BOOL Clear_Away_Ended_Classes();
}
