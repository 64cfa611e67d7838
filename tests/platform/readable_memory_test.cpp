#include <platform/kernel.h>

#include <gtest/gtest.h>

#include <cstring>
#include <sys/mman.h>

namespace {

TEST(ReadableMemory, Is_Told_Without_Being_Touched) {
    constexpr std::size_t page = 4096;
    auto *const pages = static_cast<char *>(
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(pages, MAP_FAILED);
    std::memset(pages, 'x', 2 * page);
    EXPECT_FALSE(IsBadStringPtrA(pages, 2 * page)) << "no terminator, but as much as was asked for";
    ASSERT_EQ(mprotect(pages + page, page, PROT_NONE), 0);
    EXPECT_FALSE(IsBadStringPtrA(pages, page));
    EXPECT_TRUE(IsBadStringPtrA(pages, page + 1));
    EXPECT_TRUE(IsBadStringPtrA(pages + page, 1));
    EXPECT_FALSE(IsBadStringPtrA(pages + page, 0));
    EXPECT_FALSE(IsBadReadPtr(pages, page));
    EXPECT_FALSE(IsBadReadPtr(pages + page, 0));
    EXPECT_TRUE(IsBadReadPtr(pages + 1, page));
    EXPECT_TRUE(IsBadReadPtr(pages, 0xFFFFFFFF)) << "beyond the last address";
    pages[page - 1] = 0;
    EXPECT_FALSE(IsBadStringPtrA(pages, 0xFFFFFFFF));
    EXPECT_FALSE(IsBadStringPtrA(pages + page - 1, page));
    for (const unsigned long wild : {0ul, 1ul, 16ul, 0xFFFFFFFFul}) {
        EXPECT_TRUE(IsBadStringPtrA(reinterpret_cast<const char *>(wild), 1)) << wild;
        EXPECT_TRUE(IsBadReadPtr(reinterpret_cast<const void *>(wild), 1)) << wild;
    }
    munmap(pages, 2 * page);
}

} // namespace
