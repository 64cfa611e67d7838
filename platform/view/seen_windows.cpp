// The machine's windows, seen from outside.

#include <platform/errors.h>
#include <platform/kernel/outcome.h>
#include <platform/machine_contents.h>
#include <platform/user/shared_windows.h>
#include <platform/view/seen_blocks.h>

#include <cstdio>
#include <cstring>

bool SharedWindows::See(const SeenBlock &block, MachineWindowVisitor visit, void *context) {
    if (block.Size() != sizeof(Table)) return false;
    const auto &table = *static_cast<const Table *>(block.Contents());
    const std::uint32_t foreground = table.foreground.load(std::memory_order_acquire);
    for (const WindowRow &row : table.windows) {
        const std::uint32_t handle = row.handle.load(std::memory_order_acquire);
        const ThreadRow &thread = table.threads[row.thread.load(std::memory_order_relaxed) % Most_Threads];
        if (handle == 0 || !thread.Lives()) continue;
        MachineTopWindow window = {};
        window.window = reinterpret_cast<HWND>(handle);
        window.process_id = thread.process_id.load(std::memory_order_acquire);
        window.thread_id = thread.thread_id.load(std::memory_order_relaxed);
        window.state = row.state.load(std::memory_order_acquire) & State_Bits;
        window.foreground = handle == foreground;
        std::memcpy(window.window_class, row.class_name, sizeof window.window_class - 1);
        std::snprintf(window.title, sizeof window.title, "%s", Title(row).c_str());
        const bool same = row.handle.load(std::memory_order_acquire) == handle;
        if (same && !visit(&window, context)) break;
    }
    return true;
}

extern "C" {

// Without a table there are no windows.
BOOL Visit_Machine_Windows(MachineWindowVisitor visit, void *context) {
    return Within_Memory(FALSE, [=] {
        if (!visit) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
        const SeenBlock block(SharedBlockKind::Internal, SharedWindows::Block_Name);
        if (!block) return BOOL{GetLastError() == static_cast<DWORD>(ERROR_FILE_NOT_FOUND)};
        return Succeed_Or_Tell(SharedWindows::See(block, visit, context) ? NO_ERROR
                                                                         : ERROR_REVISION_MISMATCH);
    });
}
}
