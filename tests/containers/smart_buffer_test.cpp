#include <tests/support/file_verbs.h>
#include <tests/support/test_memory.h>

#include <kelmara/containers/smart_buffer.h>
#include <kelmara/system/file.h>

#include <climits>
#include <random>

namespace {

class Buffer : public CSmartBuffer {
  public:
    Buffer() = default;
    explicit Buffer(const std::string &data, long capacity = 16) {
        Initialize(capacity);
        CSmartBuffer::Write(data.data(), static_cast<long>(data.size()));
    }
    std::string Data() const {
        return std::string(CSmartBuffer::Buffer, static_cast<std::size_t>(End_Of_Data));
    }
    char *Block() const { return CSmartBuffer::Buffer; }
    using CSmartBuffer::Capacity;
    using CSmartBuffer::Check_Size_Requirements;
    using CSmartBuffer::End_Of_Data;
    using CSmartBuffer::Offset;
    using CSmartBuffer::Write_Pointer;

    /// The replacement step by step, as it is to look from outside.
    void Replace_In_Steps(const char *find, const char *replacement, bool all) {
        Move_To(0L);
        while (Move_To(find, false) == 0) {
            Delete(static_cast<long>(std::strlen(find)));
            Insert(replacement, static_cast<long>(std::strlen(replacement)));
            if (!all) return;
        }
    }
    std::string State() const {
        EXPECT_EQ(Write_Pointer, CSmartBuffer::Buffer + Offset);
        return Data() + " | cursor " + std::to_string(Offset) + " of " + std::to_string(Capacity);
    }
};

class SmartBuffer : public FileTest {
    const NoLeak no_leak_;
};

TEST_F(SmartBuffer, IsRefusedUntilItHasABlock) {
    Buffer buffer;
    char byte = 'x';
    const auto expect_nothing = [&] {
        EXPECT_EQ(buffer.Write("a") & buffer.Insert("a", 1), E_OUTOFMEMORY);
        EXPECT_EQ(buffer.Read(&byte, 1, true) & buffer.Move_To(1) & buffer.Move_To("a", true), -1);
        EXPECT_EQ(buffer.Delete(1) | buffer.Search_And_Replace("a", "b", true) | buffer.Move_To(0L), 0);
        EXPECT_EQ(buffer.State(), " | cursor 0 of 0");
        EXPECT_EQ(static_cast<char *>(buffer), nullptr);
    };
    expect_nothing();
    EXPECT_EQ(buffer.Initialize(-1), E_OUTOFMEMORY);
    expect_nothing();
    ASSERT_EQ(buffer.Initialize(16) | buffer.Write("abc"), 0);
    {
        const FailingMemory failing(1);
        EXPECT_EQ(buffer.Initialize(16), E_OUTOFMEMORY);
    }
    expect_nothing();
    EXPECT_EQ(buffer.Initialize(0), 0);
    EXPECT_EQ(buffer.Write("abcde"), 0) << "grows to what is asked";
    EXPECT_EQ(buffer.State(), "abcde | cursor 5 of 5");
}

TEST_F(SmartBuffer, DoublesUntilItFits) {
    Buffer buffer(std::string(100, 'x'));
    EXPECT_EQ(buffer.State(), std::string(100, 'x') + " | cursor 100 of 128");
    const std::string before = buffer.State();
    for (const int extra : {INT_MAX - 100, 1 << 30, INT_MAX}) {
        EXPECT_EQ(buffer.Check_Size_Requirements(extra), E_OUTOFMEMORY) << extra;
        EXPECT_EQ(buffer.Write("x", extra), E_OUTOFMEMORY);
    }
    {
        const FailingMemory failing(1, true);
        EXPECT_EQ(buffer.Write(std::string(29, 'y').c_str()), E_OUTOFMEMORY);
        EXPECT_EQ(buffer.Move_To(0L) | buffer.Write("xx", 1), 0) << "what fits needs none";
        EXPECT_EQ(buffer.Insert(std::string(29, 'y').c_str(), 29), E_OUTOFMEMORY);
    }
    EXPECT_EQ(buffer.Move_To(100), 0);
    EXPECT_EQ(buffer.State(), before);
}

TEST_F(SmartBuffer, IsEditedAtTheCursor) {
    Buffer buffer("0123456789");
    EXPECT_EQ(buffer.Move_To(2) | buffer.Write("ab"), 0);
    EXPECT_EQ(buffer.State(), "01ab456789 | cursor 4 of 16");
    EXPECT_EQ(buffer.Insert("--", 2), 0);
    EXPECT_EQ(buffer.State(), "01ab--456789 | cursor 6 of 16");
    EXPECT_EQ(buffer.Delete(3), 0);
    EXPECT_EQ(buffer.State(), "01ab--789 | cursor 6 of 16");
    EXPECT_EQ(buffer.Delete(100) | buffer.Delete(-1) | buffer.Delete(1), 0);
    EXPECT_EQ(buffer.State(), "01ab-- | cursor 6 of 16");
    EXPECT_EQ(buffer.Insert(nullptr, 5) | buffer.Write("x", -5) | buffer.Write(nullptr, 5), 0);
    EXPECT_EQ(buffer.State(), "01ab-- | cursor 6 of 16");
    EXPECT_EQ(buffer.Move_To(17) & buffer.Move_To(-1), -1);
    EXPECT_EQ(buffer.Get_Current_Offset(), 6);
    EXPECT_EQ(buffer.Move_To(15) | buffer.Delete(1) | buffer.Insert("xyz", 3), 0);
    EXPECT_EQ(buffer.End_Of_Data, 18) << "an insertion behind the data writes";
    EXPECT_EQ(buffer.Data().substr(15), "xyz");
    EXPECT_EQ(buffer.Capacity, 32);
    EXPECT_FALSE(buffer.At_End());
    EXPECT_EQ(buffer.Move_To(32), 0);
    EXPECT_TRUE(buffer.At_End());

    const unsigned short wide[] = {'h', 0x100, 0};
    Buffer other("ab");
    EXPECT_EQ(other.Write(wide) | other.Move_To(1) | other.Insert(&other), 0);
    EXPECT_EQ(other.Data(), "aab" + std::string("h\0\0\1b", 5) + std::string("h\0\0\1", 4));
}

TEST_F(SmartBuffer, IsReadUpToItsCapacity) {
    Buffer buffer("0123456789");
    char out[20] = {};
    EXPECT_EQ(buffer.Move_To(4) | buffer.Read(out, 12, false), 0);
    EXPECT_EQ(std::string(out, 12), std::string("456789\0\0\0\0\0\0", 12));
    EXPECT_EQ(buffer.Get_Current_Offset(), 4);
    EXPECT_EQ(buffer.Read(out, 13, true) & buffer.Read(out, -1, true) & buffer.Read(out, INT_MAX, true) &
                  buffer.Read(nullptr, 1, true),
              -1);
    EXPECT_EQ(buffer.Read(out, 12, true), 0);
    EXPECT_EQ(buffer.Get_Current_Offset(), 16);
}

TEST_F(SmartBuffer, TakesBytesOfItsOwnBlock) {
    const std::string text = "0123456789abcdef"; // the block is full
    for (const long from : {0L, 4L, 12L}) {
        Buffer written(text), inserted(text);
        EXPECT_EQ(written.Write(written.Block() + from, 4), 0);
        EXPECT_EQ(written.Data(), text + text.substr(static_cast<std::size_t>(from), 4));
        EXPECT_EQ(inserted.Move_To(6) | inserted.Insert(inserted.Block() + from, 4), 0);
        EXPECT_EQ(inserted.Data(), "012345" + text.substr(static_cast<std::size_t>(from), 4) + "6789abcdef");
        const FailingMemory failing(1);
        EXPECT_EQ(inserted.Insert(inserted.Block(), 4), E_OUTOFMEMORY);
    }
    Buffer terms(std::string("a\0bb\0a a", 8));
    EXPECT_EQ(terms.Search_And_Replace(terms.Block(), terms.Block() + 2, true), 0);
    EXPECT_EQ(terms.Data(), std::string("bb\0bb\0bb bb", 11));
}

TEST_F(SmartBuffer, ReplacesAsIfStepByStep) {
    std::mt19937 random(2);
    const char *finds[] = {"a", "ab", "aa", "aba", "abcdef", "c"};
    const char *replacements[] = {"", "a", "b", "ab", "xyz", "aaaa", "a longer one than all the others"};
    for (int round = 0; round < 20000; ++round) {
        std::string data;
        for (unsigned size = random() % 80; size > 0; --size) data += "aaabbcdef"[random() % 9];
        if (random() % 2) data.insert(random() % (data.size() + 1), "abcdef");
        const char *find = finds[random() % std::size(finds)];
        const char *replacement = replacements[random() % std::size(replacements)];
        const bool all = random() % 4 != 0;
        const bool no_memory = random() % 3 == 0;
        const long capacity = 1 + static_cast<long>(random() % 90);
        Buffer ours(data, capacity), steps(data, capacity);
        const FailingMemory failing(no_memory ? 1 : LONG_MAX, true);
        EXPECT_EQ(ours.Search_And_Replace(find, replacement, all), 0);
        steps.Replace_In_Steps(find, replacement, all);
        ASSERT_EQ(ours.State(), steps.State()) << data << ": " << find << " by " << replacement;
    }
}

TEST_F(SmartBuffer, ReplacesNothingMoreThanItIsAsked) {
    Buffer buffer("a-a-a", 64);
    EXPECT_EQ(buffer.Move_To(nullptr, true) & buffer.Move_To("A", true), -1);
    EXPECT_EQ(buffer.Search_And_Replace("a", "aa", true), 0);
    EXPECT_EQ(buffer.State(), "aa-aa-aa | cursor 8 of 64");
    for (long i = buffer.End_Of_Data; i < 64; ++i) EXPECT_EQ(buffer.Block()[i], 0) << "behind the result";
    EXPECT_EQ(buffer.Search_And_Replace("-", "", false), 0);
    EXPECT_EQ(buffer.State(), "aaaa-aa | cursor 2 of 64");
    EXPECT_EQ(buffer.Search_And_Replace("", "<", true), 0) << "ends";
    EXPECT_EQ(buffer.State(), "<aaaa-aa | cursor 1 of 64");
    EXPECT_EQ(buffer.Search_And_Replace(nullptr, "x", true) | buffer.Search_And_Replace("a", nullptr, true),
              0);
    EXPECT_EQ(buffer.State(), "<aaaa-aa | cursor 0 of 64");
}

TEST_F(SmartBuffer, IsLoadedAndWrittenBack) {
    machine.Write("drive_c/file", "0123456789");
    machine.Write("drive_c/empty", "");
    CKMFile file, out;
    ASSERT_EQ(file.Open("file", false, false) | out.Open("out", true, true), 0);
    Buffer buffer;
    EXPECT_EQ(buffer.Initialize_From_File(&file), 0);
    EXPECT_TRUE(buffer.At_End());
    EXPECT_EQ(buffer.Write("ab") | buffer.Move_To(3) | buffer.Flush_To_File(&out) | out.Close(), 0);
    EXPECT_EQ(buffer.Get_Current_Offset(), 3);
    EXPECT_EQ(machine.Read("drive_c/out"), "0123456789ab");
    EXPECT_EQ(buffer.Flush_To_File(&file), 1006) << "not writable";
    EXPECT_EQ(buffer.Flush_To_File(nullptr), 1006);
    EXPECT_EQ(buffer.Initialize_From_File(nullptr), 1006);

    EXPECT_EQ(file.MoveTo(7, 0) | buffer.Initialize_From_File(&file), 0);
    EXPECT_EQ(buffer.Data(), std::string("789\0\0\0\0\0\0\0", 10)) << "from the file's position on";
    {
        const FailingMemory failing(1);
        EXPECT_EQ(buffer.Initialize_From_File(&file), E_OUTOFMEMORY);
        EXPECT_EQ(buffer.Block(), nullptr);
    }
    EXPECT_EQ(file.Open("empty", true, false) | buffer.Initialize_From_File(&file), 0);
    EXPECT_EQ(buffer.Flush_To_File(&file), 1392) << "no bytes";
    EXPECT_EQ(buffer.Write("abc"), 0);
    EXPECT_EQ(buffer.State(), "abc | cursor 3 of 3");
}

} // namespace
