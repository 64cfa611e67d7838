#pragma once
// The window classes that this process knows.

#include <platform/user/window.h>

struct WindowClasses {
    /// Null when there is none of that name. May throw std::bad_alloc.
    static std::shared_ptr<const WindowClass> Find(const char *name);
    /// Codes of errors.h.
    static long Add(WindowClass fresh);
    static long Remove(const char *name);
    static const BuiltInClass *Built_In();
};
