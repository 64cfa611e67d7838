#include <tests/containers/list_fixture.h>

namespace {

using Iterators = Lists;

TEST_F(Iterators, DeliverNullsAndEndByMore) {
    CDSList list, empty;
    for (int number : {0, 7, 0}) list.Add(number, 0);
    EXPECT_EQ(Content(list), "070");
    CIterator walk;
    EXPECT_EQ(walk.Current(), nullptr);
    EXPECT_EQ(walk.Next(), nullptr);
    walk.Reset();
    EXPECT_EQ(walk.Iterate(&list, Value(7)), Value(7));
    EXPECT_EQ(walk.Current(), Value(7));
    EXPECT_EQ(walk.Iterate(&list, Value(8)), nullptr);
    EXPECT_FALSE(walk.More());
    list.Push(6, 0);
    walk.Reset();
    EXPECT_EQ(walk.Next(), Value(6));
    EXPECT_EQ(walk.Reset_To(Value(6)), Value(6));
    EXPECT_EQ(walk.Reset_To(Value(7)), nullptr) << "a null ends that search";
    for (CDSList *nothing : {&empty, static_cast<CDSList *>(nullptr)}) {
        EXPECT_EQ(walk.Iterate(nothing), nullptr);
        EXPECT_FALSE(walk.More());
        EXPECT_EQ(walk.Iterate(nothing, Value(6)), nullptr);
        EXPECT_EQ(walk.Iterate(nothing, static_cast<short>(0)), nullptr);
        EXPECT_EQ(walk.Previous(), nullptr);
        walk.Delete_Current();
    }
}

TEST_F(Iterators, StartAtAnIndexAndWalkBack) {
    OddList list;
    Add_Numbers(list, 1, 3);
    CIterator walk;
    for (short index : {0, 1, 2}) {
        EXPECT_EQ(walk.Iterate(&list, index), list.GetListItem(index));
        EXPECT_EQ(walk.Next(), Value(index + 1));
        EXPECT_TRUE(walk.More());
    }
    for (short index : {3, 32767}) {
        EXPECT_EQ(walk.Iterate(&list, index), nullptr);
        EXPECT_EQ(walk.Next(), nullptr);
        EXPECT_FALSE(walk.More());
    }
    for (long value : {3L, 2L, 1L, 0L, 0L}) EXPECT_EQ(walk.Previous(), Value(value)) << "from past the end";
    EXPECT_EQ(walk.Iterate(&list, static_cast<short>(-1)), nullptr);
    EXPECT_EQ(walk.Next(), Value(1));

    walk.Iterate(&list);
    EXPECT_EQ(walk.Previous(), nullptr) << "in front of the first";
    for (long value : {1L, 2L}) EXPECT_EQ(walk.Next(), Value(value));
    EXPECT_EQ(walk.Next(), Value(3));
    EXPECT_EQ(walk.Previous(), Value(3)) << "on the last entry once more";
    EXPECT_EQ(walk.Previous(), Value(2));
}

// Walks over 1 2 3 4 and deletes each entry whose bit is set, `times` times over.
std::string Visited(CDSList &list, unsigned bits, int times) {
    std::string visited;
    CIterator walk;
    for (void *value = walk.Iterate(&list); walk.More(); value = walk.Next()) {
        const long number = reinterpret_cast<long>(value);
        visited += std::to_string(number);
        for (int time = 0; time < times && (bits >> (number - 1) & 1); ++time) walk.Delete_Current();
    }
    return visited;
}

TEST_F(Iterators, DeleteOnTheWay) {
    CDSList list;
    Add_Numbers(list, 1, 4);
    EXPECT_EQ(Visited(list, 0b0100, 2), "1234") << "the second deletion takes the entry in front";
    EXPECT_EQ(Visited(list, 0b0001, 5), "14") << "and there is nothing in front of the first";
    EXPECT_EQ(Content(list), "4");
    Add_Numbers(list, 5, 7);
    CIterator walk;
    walk.Iterate(&list, Value(6));
    walk.Reset();
    EXPECT_EQ(walk.Current(), Value(6));
    walk.Delete_Current(); // right after a reset
    for (long value : {4L, 5L, 7L}) EXPECT_EQ(walk.Next(), Value(value));
    EXPECT_EQ(walk.Next(), nullptr);
}

} // namespace
