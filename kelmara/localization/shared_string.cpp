#include <kelmara/localization/shared_string.h>

#include <kelmara/foundation/safe_str.h>

namespace {

// Not an object of its own: it would be made and destroyed at a time of the compiler's choice.
alignas(CSafeStr) constinit unsigned char Place[sizeof(CSafeStr)] = {};

} // namespace

CSafeStr &Shared_String() {
    return *std::launder(reinterpret_cast<CSafeStr *>(Place));
}

void Make_Shared_String() {
    ::new (static_cast<void *>(Place)) CSafeStr;
}

void Release_Shared_String() {
    Shared_String().~CSafeStr();
    Make_Shared_String();
}
