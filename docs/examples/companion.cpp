// Enters a memory companion on this machine, and takes a block from it. Argument: the module's path.
#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/machine.h>
#include <platform/registry.h>

#include <cstdio>
#include <cstring>

// By the machine's own calls: CRegMaster needs memory, and that is what is missing.
static bool Enter_Memory(const char *windows_path) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Dunmerit Software\\KelMara", 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, &key, nullptr) != 0)
        return false;
    const LONG result = RegSetValueExA(key, "Memory", 0, REG_SZ, reinterpret_cast<const BYTE *>(windows_path),
                                       static_cast<DWORD>(std::strlen(windows_path)) + 1);
    RegCloseKey(key);
    return result == 0;
}

int main(int argc, char **argv) {
    char path[260];
    if (argc < 2 || !Windows_Path(argv[1], path, sizeof path) || !Enter_Memory(path)) return 1;

    void *block = ds_malloc(100); // the first allocation of the process binds the companion
    ds_free(block);

    auto total = reinterpret_cast<long (*)()>(GetProcAddress(GetModuleHandleA(path), "m_total_blocks"));
    if (!total) return 1;
    std::printf("blocks handed out: %ld\n", total());
    return 0;
}
