#include <kelmara/connectivity/telephony_entries.h>

#include <platform/kernel.h>

namespace {

constinit LateBoundWord Library_Word{0};

HMODULE Telephony_Library() {
    if (Library_Word == 0) {
        const HMODULE library = LoadLibraryA("TAPI32.DLL");
        Library_Word = library ? reinterpret_cast<unsigned long>(library) : Not_There;
    }
    return Library_Word == Not_There ? nullptr : reinterpret_cast<HMODULE>(Library_Word.load());
}

} // namespace

FARPROC LateBoundEntry::Find() {
    if (m_Word == 0) {
        const HMODULE library = Telephony_Library();
        const FARPROC entry = library ? GetProcAddress(library, m_Name) : nullptr;
        m_Word = entry ? reinterpret_cast<unsigned long>(entry) : Not_There;
    }
    return m_Word == Not_There ? nullptr : reinterpret_cast<FARPROC>(m_Word.load());
}
