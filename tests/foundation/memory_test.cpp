// How the memory services are bound, each time in a process of its own.

#include <kelmara/foundation/memory.h>

#include <tests/support/companion_test.h>

#include <cstdlib>

namespace {

class MemoryBinding : public CompanionTest {
  protected:
    void Install(const std::string &module, const std::string &windows_path = "C:\\m.dll") const {
        CompanionTest::Install(module, "Memory", windows_path);
    }
};

SECOND_PROCESS(allocator_at_exit) {
    std::atexit([] { ds_free(ds_malloc(1)); });
    ds_free(ds_malloc_clear(1));
    return 7;
}

SECOND_PROCESS(allocator) {
    void *block = ds_malloc(10);
    block = ds_realloc(block, 20);
    ds_free(block);
    ds_free(ds_malloc_clear(5));
    ds_free(nullptr);
    return block ? 7 : 1;
}

TEST_F(MemoryBinding, EndsTheProcessWithoutAWholeCompanion) {
    const Outcome not_installed(1, "[Error] Kelmara is not installed or setup properly. Reinstall\n");
    EXPECT_EQ(Run("allocator"), not_installed) << "not even a key";
    Write_Value("Memories", "C:\\m.dll");
    EXPECT_EQ(Run("allocator"), not_installed);
    Write_Value("Memory", std::string(255, 'x'));
    EXPECT_EQ(Run("allocator"), not_installed) << "one byte more than the buffer takes";
    Write_Value("Memory", "C:\\nowhere\\m.dll");
    EXPECT_EQ(Run("allocator"), Outcome(1, ""));
    machine.Write("drive_c/m.dll", "no module");
    Write_Value("Memory", "C:\\m.dll");
    EXPECT_EQ(Run("allocator"), Outcome(1, ""));
    Install("companion_without_initialize");
    EXPECT_EQ(Run("allocator").first, 1);
    for (const char *part : {"alloc", "alloc_clear", "realloc", "free"}) {
        Install(std::string("companion_without_") + part);
        const auto [code, said] = Run("allocator");
        EXPECT_EQ(code, 1) << part;
        EXPECT_EQ(said.rfind("loaded\nInitialize\n", 0), 0u) << said;
        EXPECT_EQ(Run("allocator_at_exit").first, 1) << "exit routines find no half of a binding";
    }
}

constinit void *left_for_the_end = nullptr;

void Free_At_The_Very_End(int, void *) {
    if (left_for_the_end) ds_free(left_for_the_end);
}

// Registered before any library is initialised, and not as this program's own: it runs after the exit
// routines of all libraries.
void Register_Before_Libraries(int, char **, char **) {
    on_exit(Free_At_The_Very_End, nullptr);
}
[[gnu::section(".preinit_array"),
  gnu::used]] void (*const before_libraries)(int, char **, char **) = Register_Before_Libraries;

SECOND_PROCESS(late_releaser) {
    left_for_the_end = ds_realloc(nullptr, 10);
    return 0;
}

TEST_F(MemoryBinding, GoesAtTheEndAndIsMadeAnewByAReleaseAfterIt) {
    const Outcome life(7, "loaded\nInitialize\nm_free\nm_free\nm_free(null)\nunloaded\n");
    const std::string folder = "C:\\" + std::string(120, 'd') + "\\" + std::string(120, 'e') + "\\";
    Install("companion_whole", folder + std::string(254 - folder.size() - 4, 'm') + ".dll");
    EXPECT_EQ(Run("allocator"), life) << "the longest path that the value may hold";
    Install("companion_whole");
    EXPECT_EQ(Run("allocator"), life);
    EXPECT_EQ(Run("late_releaser"), Outcome(0, "loaded\nInitialize\nunloaded\nInitialize\nm_free\n"));
}

constinit char own_block[16] = {};
constinit int own_calls = 0;

SECOND_PROCESS(host) {
    const auto alloc = [](long) -> void * { return own_calls += 1, own_block; };
    const auto alloc_clear = [](long) -> void * { return own_calls += 10, own_block; };
    const auto resize = [](void *block, long) -> void * { return own_calls += 100, block; };
    const auto release = [](void *) { own_calls += 1000; };
    Set_Local_Memory_Procs(alloc, alloc_clear, resize, release);
    Set_Local_Memory_Procs(nullptr, nullptr, nullptr, nullptr); // ignored, or the next call would not return
    const bool one_block = ds_malloc(1) == own_block && ds_malloc_clear(1) == own_block &&
                           ds_realloc(own_block, 1) == own_block && ds_malloc_procptr(1) == own_block;
    ds_free(own_block);
    ds_free_procptr(own_block);
    return one_block && own_calls == 2112 ? 7 : 1;
}

SECOND_PROCESS(late_host) {
    ds_free(ds_malloc_clear(1));
    Set_Local_Memory_Procs(nullptr, nullptr, nullptr, nullptr);
    ds_free(ds_malloc(1));
    return 7;
}

TEST_F(MemoryBinding, LeavesRegistryAndCompanionAloneForAHostsRoutines) {
    EXPECT_EQ(Run("host"), Outcome(7, "")) << "on a machine without the suite";
    Install("companion_whole");
    EXPECT_EQ(Run("host"), Outcome(7, ""));
    EXPECT_EQ(Run("late_host"), Outcome(7, "loaded\nInitialize\nm_free\nm_free\nunloaded\n"));
}

} // namespace
