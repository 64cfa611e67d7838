#include <platform/kernel.h>
#include <platform/local_memory.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(LocalMemory, IsKnownByItsHandle) {
    const HLOCAL block = LocalAlloc(LMEM_ZEROINIT, 300), empty = LocalAlloc(LMEM_FIXED, 0);
    ASSERT_TRUE(block && empty);
    EXPECT_EQ(std::string(static_cast<char *>(block), 300), std::string(300, '\0'));
    EXPECT_EQ(LocalSize(block) + LocalSize(empty), 300u);
    EXPECT_EQ(LocalFree(block), nullptr);
    EXPECT_EQ(LocalFree(empty), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);

    char foreign = 0;
    for (const HLOCAL no_block : {block, static_cast<HLOCAL>(&foreign)}) {
        SetLastError(0);
        EXPECT_EQ(LocalFree(no_block), no_block) << "nothing is freed twice";
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(LocalSize(no_block), 0u);
    }
    EXPECT_EQ(LocalAlloc(2, 10), nullptr) << "none that moves";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

} // namespace
