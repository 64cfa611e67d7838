#include <platform/runtime.h>

#include <gmock/gmock.h>

#include <thread>

namespace {

std::vector<int> Next_Numbers(int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i) numbers.push_back(Machine_Rand());
    return numbers;
}

TEST(RandomNumbers, AreTheSameSeriesForEveryThreadUntilItIsSeeded) {
    const std::vector<int> series = {41, 18467, 6334, 26500, 19169};
    std::thread([&] { EXPECT_EQ(Next_Numbers(5), series); }).join();
    std::thread([&] {
        Machine_Seed_Rand(1234);
        EXPECT_NE(Next_Numbers(5), series);
        std::thread([&] { EXPECT_EQ(Next_Numbers(5), series) << "a seed is its thread's own"; }).join();
        Machine_Seed_Rand(1);
        EXPECT_EQ(Next_Numbers(5), series);
    }).join();
}

TEST(RandomNumbers, ReachBothEndsOfTheirRangeAndStayInside) {
    Machine_Seed_Rand(0xFFFFFFFF);
    const std::vector<int> numbers = Next_Numbers(1000000);
    EXPECT_EQ(*std::min_element(numbers.begin(), numbers.end()), 0);
    EXPECT_EQ(*std::max_element(numbers.begin(), numbers.end()), Machine_Rand_Max);
}

} // namespace
