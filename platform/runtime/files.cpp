#include <platform/runtime.h>

#include <platform/files/current_directory.h>
#include <platform/files/give_text.h>
#include <platform/files/removal.h>
#include <platform/files/renaming.h>
#include <platform/kernel/outcome.h>
#include <platform/runtime/runtime_error.h>

namespace {

template <class Step>
int Zero_Or_Minus_One(Step step) {
    return Succeed_Or_Set_Errno(Code_Of(step)) ? 0 : -1;
}

} // namespace

extern "C" {

int Machine_Remove(const char *path) {
    return Zero_Or_Minus_One([=] { return Delete_File(path); });
}

int Machine_Rename(const char *from, const char *to) {
    return Zero_Or_Minus_One([=] { return Rename(from, to); });
}

int Machine_Change_Directory(const char *path) {
    return Zero_Or_Minus_One([=] { return Change_Directory(path); });
}

char *Machine_Get_Directory(char *out, int size) {
    std::string path;
    const auto find = [&] { return out ? Find_Current_Directory(path) : ERROR_INVALID_PARAMETER; };
    if (!Succeed_Or_Set_Errno(Code_Of(find))) return nullptr;
    if (size > 0 && Give_Text(path, out, static_cast<DWORD>(size)) == path.size()) return out;
    errno = ERANGE;
    return nullptr;
}
}
