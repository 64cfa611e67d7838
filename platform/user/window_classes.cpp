#include <platform/user/window_classes.h>

#include <platform/files/paths.h>
#include <platform/kernel.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/fork_lock.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t Longest_Name = 255;

constinit BuiltInClass *first_built_in = nullptr;

struct Classes {
    ForkLock lock;
    std::vector<std::shared_ptr<const WindowClass>> known;
};

std::shared_ptr<const WindowClass> Of_Built_In(const char *name, WNDPROC procedure) {
    auto made = std::make_shared<WindowClass>();
    made->name = name;
    made->procedure = procedure;
    made->built_in = true;
    return made;
}

Classes &The_Classes() {
    static Classes *classes = new Classes;
    return *classes;
}

// Numbers in place of names are not known here.
bool Is_Name(const char *name) {
    return reinterpret_cast<std::uintptr_t>(name) > 0xFFFF && *name && std::strlen(name) <= Longest_Name;
}

// The caller holds the lock.
auto Position_Of(Classes &classes, const char *name) {
    return std::find_if(classes.known.begin(), classes.known.end(),
                        [name](const auto &each) { return Equal_Without_Case(each->name, name); });
}

} // namespace

BuiltInClass::BuiltInClass(const char *name, WNDPROC procedure)
    : name_(name), procedure_(procedure), next_(first_built_in) {
    first_built_in = this;
}

std::shared_ptr<const WindowClass> WindowClasses::Find(const char *name) {
    if (!Is_Name(name)) return nullptr;
    Classes &classes = The_Classes();
    std::lock_guard guard(classes.lock);
    const auto found = Position_Of(classes, name);
    if (found != classes.known.end()) return *found;
    for (const BuiltInClass *each = first_built_in; each; each = each->next_) {
        if (!Equal_Without_Case(each->name_, name)) continue;
        classes.known.push_back(Of_Built_In(each->name_, each->procedure_));
        return classes.known.back();
    }
    return nullptr;
}

long WindowClasses::Add(WindowClass fresh) {
    if (Find(fresh.name.c_str())) return ERROR_CLASS_ALREADY_EXISTS;
    Classes &classes = The_Classes();
    std::lock_guard guard(classes.lock);
    if (Position_Of(classes, fresh.name.c_str()) != classes.known.end()) return ERROR_CLASS_ALREADY_EXISTS;
    classes.known.push_back(std::make_shared<const WindowClass>(std::move(fresh)));
    return NO_ERROR;
}

// Every window holds on to its class.
long WindowClasses::Remove(const char *name) {
    if (!Is_Name(name)) return ERROR_CLASS_DOES_NOT_EXIST;
    Classes &classes = The_Classes();
    std::lock_guard guard(classes.lock);
    const auto found = Position_Of(classes, name);
    if (found == classes.known.end() || (*found)->built_in) return ERROR_CLASS_DOES_NOT_EXIST;
    if (found->use_count() > 1) return ERROR_CLASS_HAS_WINDOWS;
    classes.known.erase(found);
    return NO_ERROR;
}

extern "C" {

ATOM RegisterClassA(const WNDCLASSA *window_class) {
    const long error = Code_Of([&]() -> long {
        if (!window_class || !window_class->lpfnWndProc || !Is_Name(window_class->lpszClassName))
            return ERROR_INVALID_PARAMETER;
        if (window_class->cbClsExtra || window_class->cbWndExtra) return ERROR_INVALID_PARAMETER;
        WindowClass fresh;
        fresh.name = window_class->lpszClassName;
        fresh.procedure = window_class->lpfnWndProc;
        fresh.instance = window_class->hInstance;
        fresh.style = window_class->style;
        return WindowClasses::Add(std::move(fresh));
    });
    static std::atomic<ATOM> last{0xC000};
    return Succeed_Or_Tell(error) ? static_cast<ATOM>(0xC000 | ++last) : ATOM{0};
}

BOOL UnregisterClassA(LPCSTR name, HINSTANCE) {
    return Succeed_Or_Tell(Code_Of([&] { return WindowClasses::Remove(name); }));
}

int GetClassNameA(HWND window, LPSTR name, int size) {
    return Within_Memory(0, [&] {
        const WindowPointer found = Find_Window_Or_Tell(window);
        if (!found) return 0;
        if (!name || size <= 0) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        const std::string &known = found->window_class->name;
        const std::size_t length = std::min(known.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(name, known.data(), length);
        name[length] = 0;
        return static_cast<int>(length);
    });
}
}
