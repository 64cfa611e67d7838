// What the debug log hears of new and delete, in a process with a log companion and a host's own memory.

#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/new_delete.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>

#include <tests/support/companion_test.h>
#include <tests/support/test_memory.h>

#include <cstdio>
#include <cstdlib>

namespace {

using NewAndDelete = CompanionTest;

int allocations, releases;

SECOND_PROCESS(maker) {
    Set_Local_Memory_Procs([](long) -> void * { return ++allocations, nullptr; },
                           [](long) -> void * { return ++allocations, nullptr; },
                           [](void *, long) -> void * { return ++allocations, nullptr; },
                           [](void *) { ++releases; });
    Set_Debug_Output_Sink(
        [](const char *text, void *) {
            if (std::string(text).starts_with("Initialize")) {
                std::fprintf(stderr, "while loading: %p\n", Allocate_Object(1));
                Release_Object(nullptr);
            }
            if (!std::string(text).starts_with("Queue_Entry")) std::fputs(text, stderr);
        },
        nullptr);
    const bool none = !(new CSafeStr) && !(new CSafeStr[2]) && !(new (std::nothrow) CMutexHolder);
    CSafeStr::operator delete(nullptr);
    CMutexHolder::operator delete[](nullptr);
    delete static_cast<CSafeStr *>(nullptr); // does not get to the operator
    std::fprintf(stderr, "%d allocations, %d releases\n", allocations, releases);
    return none ? 7 : 1;
}

TEST_F(NewAndDelete, TellTheDebugLogOfWhatShouldNotHappen) {
    EXPECT_EQ(Run("maker"), Outcome(7, "3 allocations, 0 releases\n")) << "nobody listens";
    Install("log_companion_whole", "Log");
    Write_Value("Root", "c:\\");
    machine.Write("drive_c/logVars.txt", "");
    EXPECT_EQ(Run("maker"), Outcome(7, "loaded\nwhile loading: (nil)\nInitialize in C:\\\n"
                                       "new failed\nnew failed\nnew failed\n"
                                       "deleting a NULL pointer!\ndeleting a NULL pointer!\n"
                                       "4 allocations, 0 releases\nunloaded\n"))
        << "and what fails while the log is loaded does not come back to it";
}

struct Thrower {
    KELMARA_CLASS_ALLOCATION
    Thrower() { throw 1; }
};

TEST(ClassAllocation, GivesBackTheBlockOfAConstructorThatThrows) {
    const NoLeak no_leak;
    EXPECT_THROW(delete new Thrower, int);
    EXPECT_THROW(delete new (std::nothrow) Thrower, int);
}

} // namespace
