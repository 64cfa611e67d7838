#include <tests/support/second_process.h>
#include <tests/support/test_memory.h>

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    int exit_code = 0;
    if (Ran_As_Second_Process(argc, argv, &exit_code)) return exit_code;
    Install_Test_Memory();
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
