// All that happens when the library is loaded, in this order and nowhere else: what a part of the library
// sets up, and the exit routine that takes it back. Exit routines run in the reverse order, so the memory
// binding goes first; a later release binds it anew. Nothing here takes the library's memory, prints or
// can fail: what cannot be set up now is set up by the first call that needs it. Nothing waits, but for the
// instance registry's names, up to 5 seconds each when another process is stopped in the machine's lock of
// names.

#include <kelmara/containers/list_item_pool.h>
#include <kelmara/foundation/memory_binding.h>
#include <kelmara/localization/shared_string.h>
#include <kelmara/shared_state/instance_share.h>
#include <kelmara/shared_state/log_library.h>
#include <kelmara/shared_state/wait_library.h>

#include <platform/types.h>

#include <cstdlib>

namespace {

// What the shared string holds goes back through the binding that gave it.
void Release_Memory() {
    Release_Shared_String();
    Release_Memory_Library();
}

[[gnu::constructor]] void Initialize_Library() {
    (void)std::atexit(Release_Log_Library);
    (void)std::atexit(Release_Wait_Library);
    (void)std::atexit(ListItemPool::Release);
    Init_Instance_Share_At_Load();
    (void)std::atexit(Release_Instance_Share);
    Make_Shared_String();
    (void)std::atexit(Release_Shared_String);
    // Always the last line. An exit routine that finds no room is one that does not run; the process ends all
    // the same.
    (void)std::atexit(Release_Memory);
}

} // namespace

/// The library's entry point reports success for every reason that it is called with.
extern "C" [[gnu::visibility("default")]] BOOL DllMain(HINSTANCE, DWORD, void *) {
    return TRUE;
}
