#include <platform/runtime.h>

#include <thread>

namespace {

std::vector<int> Next_Numbers(int count) {
    std::vector<int> numbers;
    while (count-- > 0) numbers.push_back(Machine_Rand());
    return numbers;
}

TEST(RandomNumbers, AreOneSeriesForEachSeedAndThread) {
    const std::vector<int> series = {41, 18467, 6334, 26500, 19169};
    const auto In_A_Thread = [&] { EXPECT_EQ(Next_Numbers(5), series); };
    Machine_Seed_Rand(1234);
    EXPECT_NE(Next_Numbers(5), series);
    std::thread(In_A_Thread).join();
    Machine_Seed_Rand(1);
    EXPECT_EQ(Next_Numbers(5), series);
    const std::vector<int> many = Next_Numbers(1000000);
    EXPECT_EQ(*std::min_element(many.begin(), many.end()), 0);
    EXPECT_EQ(*std::max_element(many.begin(), many.end()), Machine_Rand_Max);
}

} // namespace
