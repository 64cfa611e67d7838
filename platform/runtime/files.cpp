#include <platform/runtime.h>

#include <platform/files/current_directory.h>
#include <platform/files/give_text.h>
#include <platform/files/removal.h>
#include <platform/files/renaming.h>
#include <platform/runtime/runtime_error.h>

namespace {

int Zero_Or_Minus_One(long error) {
    return Succeed_Or_Set_Errno(error) ? 0 : -1;
}

} // namespace

extern "C" {

int Machine_Remove(const char *path) {
    return Zero_Or_Minus_One(Delete_File(path));
}

int Machine_Rename(const char *from, const char *to) {
    return Zero_Or_Minus_One(Rename(from, to));
}

int Machine_Change_Directory(const char *path) {
    return Zero_Or_Minus_One(Change_Directory(path));
}

char *Machine_Get_Directory(char *out, int size) {
    std::string path;
    if (!Succeed_Or_Set_Errno(out ? Find_Current_Directory(path) : ERROR_INVALID_PARAMETER)) return nullptr;
    if (size > 0 && Give_Text(path, out, static_cast<DWORD>(size)) == path.size()) return out;
    errno = ERANGE;
    return nullptr;
}
}
