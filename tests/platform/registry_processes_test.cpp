// The registry of several processes at once, killed ones among them.

#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>

#include <platform/kernel.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <thread>

namespace {

using ::testing::ElementsAre;

class RegistryProcesses : public RegistryTest {
  protected:
    static std::uintmax_t File_Size() {
        return std::filesystem::file_size(std::string(Machine_Folder()) + "/" + File);
    }
    /// Fills the file with what is overwritten at once until it has been rewritten.
    static void Compact() {
        const TestKey churn("churn");
        std::uintmax_t before = 0;
        do {
            before = File_Size();
            ASSERT_EQ(churn.Set("value", std::string(4000, 'c'), REG_BINARY), ERROR_SUCCESS);
        } while (File_Size() >= before);
    }
};

// "set <name>", "get <name>", "delete <name>", "delete-key" on the key "shared".
SECOND_PROCESS(registry_peer) {
    const TestKey key("shared");
    process.Tell("ready");
    for (std::string line = process.Hear(); !line.empty(); line = process.Hear()) {
        const std::string verb = line.substr(0, line.find(' ')), name = line.substr(line.find(' ') + 1);
        if (verb == "get") process.Tell(key.Get(name));
        if (verb == "set") process.Tell(std::to_string(key.Set(name, name)));
        if (verb == "delete") process.Tell(std::to_string(RegDeleteValueA(key, name.c_str())));
        if (verb == "delete-key") process.Tell(std::to_string(RegDeleteKeyA(HKEY_CURRENT_USER, "shared")));
    }
    return 0;
}

class Peer : public SecondProcess {
  public:
    Peer() : SecondProcess("registry_peer") { EXPECT_EQ(Hear(), "ready"); }
    std::string Ask(const std::string &line) {
        Tell(line);
        return Hear();
    }
};

TEST_F(RegistryProcesses, SeeEachOthersChangesAtOnce) {
    const TestKey key("shared");
    Peer peer;
    for (int i = 0; i < 50; ++i) {
        const std::string mine = "mine" + std::to_string(i), theirs = "theirs" + std::to_string(i);
        EXPECT_EQ(key.Set(mine, mine), ERROR_SUCCESS);
        EXPECT_EQ(peer.Ask("get " + mine), mine);
        EXPECT_EQ(peer.Ask("set " + theirs), "0");
        EXPECT_EQ(key.Get(theirs), theirs);
        EXPECT_EQ(peer.Ask("delete " + mine), "0");
        EXPECT_EQ(key.Get(mine), Missing);
        EXPECT_EQ(key.Values().size(), static_cast<std::size_t>(i) + 1);
    }
    EXPECT_EQ(peer.Ask("delete-key"), "0");
    EXPECT_EQ(key.Get("theirs0"), "(1018)");
    EXPECT_EQ(key.Set("theirs0", ""), ERROR_KEY_DELETED);
}

// Reads "shared" without a pause: every name counts upward, and what is there stays.
SECOND_PROCESS(registry_reader) {
    const TestKey key("shared");
    process.Tell("ready");
    std::atomic<bool> done{false};
    std::thread waiter([&] { process.Hear(), done = true; });
    std::string trouble;
    for (int last = 0; !done && trouble.empty();) {
        const std::string constant = key.Get("constant"), counter = key.Get("counter");
        if (constant != "constant") trouble = "constant " + constant;
        if (counter.front() == '(' || std::stoi(counter) < last) trouble = "counter " + counter;
        if (trouble.empty()) last = std::stoi(counter);
    }
    waiter.join();
    process.Tell(trouble.empty() ? "fine" : trouble);
    process.Tell(key.Get("counter"));
    process.Tell(std::to_string(key.Set("by the reader", "set")));
    return 0;
}

TEST_F(RegistryProcesses, KeepWhatTheyHaveOpenWhenTheFileIsRewritten) {
    const TestKey key("shared"), gone("gone"), beside("shared\\Sub");
    key.Set("constant", "constant");
    key.Set("counter", "0");
    for (const char *name : {"z", "a", ""}) beside.Set(name, name);
    RegDeleteKeyA(gone, "");
    const auto Low_Time = [](HKEY of) {
        FILETIME time = {};
        EXPECT_EQ(Last_Change(of, &time), ERROR_SUCCESS);
        return time.dwLowDateTime;
    };
    Peer peer;
    SecondProcess reader("registry_reader");
    EXPECT_EQ(reader.Hear(), "ready");
    const std::string filler(5000, 'f');
    for (int i = 1; i <= 1000; ++i) {
        key.Set("counter", std::to_string(i));
        key.Set("filler", filler, REG_BINARY);
    }
    EXPECT_LT(File_Size(), 2u << 20) << "5 MB were written";
    reader.Tell("enough");
    for (const char *line : {"fine", "1000", "0"}) EXPECT_EQ(reader.Hear(), line);
    EXPECT_EQ(key.Get("by the reader"), "set");
    EXPECT_EQ(peer.Ask("set asleep meanwhile"), "0");
    EXPECT_EQ(key.Get("asleep meanwhile"), "asleep meanwhile");
    EXPECT_EQ(gone.Get(""), "(1018)");

    const DWORD key_time = Low_Time(key), sub_time = Low_Time(beside);
    Compact();
    Reopen();
    const TestKey again("shared"), again_beside("shared\\sub");
    EXPECT_EQ(again.Get("constant") + again.Get("filler"), "constant" + filler);
    EXPECT_THAT(again_beside.Values(), ElementsAre("z", "a", ""));
    EXPECT_EQ(Low_Time(again), key_time) << "a rewriting is no change";
    EXPECT_EQ(Low_Time(again_beside), sub_time);
    EXPECT_THAT(again.Subkeys(), ElementsAre("Sub"));
    EXPECT_FALSE(std::filesystem::exists(machine.Path(File) + std::string(".new")));
}

TEST_F(RegistryProcesses, NeverTakeAFreshKeyForADeletedOne) {
    TestKey("churn");
    Peer holder;
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "shared"), ERROR_SUCCESS);
    Compact(); // nothing in the file tells of the deleted key any more
    Peer maker;
    EXPECT_EQ(maker.Ask("set value"), "0");
    EXPECT_EQ(holder.Ask("get value"), "(1018)");
}

constexpr int Names_Per_Writer = 300;

// Overwrites its names with ever greater numbers, from the one given on, and so many bytes behind them. Tells
// each that is set.
SECOND_PROCESS(registry_writer) {
    const std::string slot = process.Arguments().at(0);
    const TestKey key("writers"), own("writers\\" + slot);
    const std::string filler(std::stoul(process.Arguments().at(2)), '.');
    for (int number = std::stoi(process.Arguments().at(1));; ++number) {
        const std::string name = slot + "-" + std::to_string(number % Names_Per_Writer);
        const std::string text = std::to_string(number);
        if (key.Set(name, text + filler) != ERROR_SUCCESS || own.Set("last", text) != ERROR_SUCCESS) return 1;
        process.Tell(text);
    }
}

// Writers in the same place, each killed and followed by the next, and what they told.
struct WriterPlace {
    void Write_And_Be_Killed(int times) {
        std::minstd_rand random(static_cast<unsigned>(name[0]));
        for (; times > 0; --times) {
            SecondProcess writer("registry_writer", {name, std::to_string(last + 1), std::to_string(filler)});
            int more = static_cast<int>(20 + random() % 80);
            for (std::string line = writer.Hear(); !line.empty(); line = writer.Hear()) {
                last = std::stoi(line);
                told[static_cast<std::size_t>(last % Names_Per_Writer)] = last;
                if (--more != 0) continue;
                Sleep(random() % 20);
                writer.Kill();
            }
            EXPECT_LE(more, 0) << "it ended on its own";
            writer.Kill();
            writer.Wait();
            EXPECT_EQ(writer.Errors(), "");
        }
    }
    void Expect_All_Set() const {
        const TestKey key("writers"), own("writers\\" + name);
        for (std::size_t i = 0; i < told.size(); ++i) {
            const std::string found = told[i] < 0 ? "-1" : key.Get(name + "-" + std::to_string(i));
            EXPECT_GE(std::atoi(found.c_str()), told[i]) << name << "-" << i << found;
        }
        EXPECT_GE(std::stoi(own.Get("last")), last);
    }

    std::string name;
    int filler;
    int last = -1;
    std::vector<int> told =
        std::vector<int>(Names_Per_Writer, -1); // of each name the last number that is set
};

TEST_F(RegistryProcesses, KeepEveryValueThoughWritersAreKilled) {
    std::vector<WriterPlace> places;
    for (const char *name : {"0", "1", "2", "3", "4", "5", "6", "7"}) places.push_back({name, 200});
    std::vector<std::thread> threads;
    for (auto &place : places) threads.emplace_back([&place] { place.Write_And_Be_Killed(5); });
    for (std::thread &thread : threads) thread.join();
    for (const auto &place : places) place.Expect_All_Set();
    Reopen();
    for (const auto &place : places) place.Expect_All_Set();
    EXPECT_EQ(TestKey("writers").Subkeys().size(), 8u);
    EXPECT_LT(File_Size(), 4u << 20);
}

TEST_F(RegistryProcesses, KeepEveryValueThoughKilledWhileRewriting) {
    // Much that lives and little else: the writer spends most of its time on rewriting the file.
    machine.Write(File + std::string(".new"), "left behind");
    WriterPlace place{"0", 4000};
    place.Write_And_Be_Killed(40);
    place.Expect_All_Set();
    Compact();
    place.Expect_All_Set();
    EXPECT_EQ(TestKey("writers").Values().size(), place.told.size());
}

} // namespace
