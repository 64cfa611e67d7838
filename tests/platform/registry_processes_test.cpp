// The registry of several processes at once, killed ones among them.

#include <tests/platform/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using namespace std::chrono_literals;

constexpr char File[] = "registry/registry.log";

class RegistryProcesses : public MachineTest {
  protected:
    static std::uintmax_t File_Size() {
        return std::filesystem::file_size(std::string(Machine_Folder()) + "/" + File);
    }
    /// Fills the file with what is overwritten at once until it has been rewritten so many times.
    static void Compact(int times) {
        const TestKey churn("churn");
        const std::string data(4000, 'c');
        for (std::uintmax_t before = File_Size(); times > 0; before = File_Size()) {
            ASSERT_EQ(churn.Set("value", data, REG_BINARY), ERROR_SUCCESS);
            if (File_Size() < before) --times;
        }
    }
};

// "set <name> <text>", "get <name>", "delete <name>", "delete-key", "make-key", "flush" on the key "shared".
SECOND_PROCESS(registry_peer) {
    auto key = std::make_unique<TestKey>("shared");
    process.Tell("ready");
    for (std::string line = process.Hear(); !line.empty(); line = process.Hear()) {
        const std::string verb = line.substr(0, line.find(' '));
        const std::string name = line.size() > verb.size() ? line.substr(verb.size() + 1) : "";
        if (verb == "get") process.Tell(key->Get(name));
        if (verb == "set") process.Tell(std::to_string(key->Set(name, name)));
        if (verb == "delete") process.Tell(std::to_string(RegDeleteValueA(*key, name.c_str())));
        if (verb == "delete-key") process.Tell(std::to_string(RegDeleteKeyA(HKEY_CURRENT_USER, "shared")));
        if (verb == "make-key") key = std::make_unique<TestKey>("shared"), process.Tell("made");
        if (verb == "flush") process.Tell(std::to_string(RegFlushKey(*key)));
    }
    return 0;
}

TEST_F(RegistryProcesses, SeeEachOthersChangesAtOnce) {
    const TestKey key("shared");
    SecondProcess peer("registry_peer");
    EXPECT_EQ(peer.Hear(), "ready");
    const auto Ask = [&](const std::string &line) {
        peer.Tell(line);
        return peer.Hear();
    };
    for (int i = 0; i < 50; ++i) {
        const std::string mine = "mine" + std::to_string(i), theirs = "theirs" + std::to_string(i);
        EXPECT_EQ(key.Set(mine, mine), ERROR_SUCCESS);
        EXPECT_EQ(Ask("get " + mine), mine);
        EXPECT_EQ(Ask("set " + theirs), "0");
        EXPECT_EQ(key.Get(theirs), theirs);
        EXPECT_EQ(Ask("delete " + mine), "0");
        EXPECT_EQ(key.Get(mine), Missing);
        EXPECT_EQ(key.Values().size(), static_cast<std::size_t>(i) + 1);
    }
    EXPECT_EQ(RegFlushKey(key), ERROR_SUCCESS);
    EXPECT_EQ(Ask("flush"), "0");
    EXPECT_EQ(Ask("delete-key"), "0");
    EXPECT_EQ(key.Get("theirs0"), "(1018)");
    EXPECT_EQ(key.Set("theirs0", ""), ERROR_KEY_DELETED);
    EXPECT_EQ(Ask("make-key"), "made");
    EXPECT_EQ(key.Get("theirs0"), "(1018)") << "another key, if of the same name";
    EXPECT_EQ(TestKey("shared").disposition, REG_OPENED_EXISTING_KEY);
}

// Reads "shared" without a pause: every name counts upward, and what is there stays.
SECOND_PROCESS(registry_reader) {
    const TestKey key("shared");
    process.Tell("ready");
    std::atomic<bool> done{false};
    std::thread waiter([&] {
        process.Hear();
        done = true;
    });
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
        EXPECT_EQ(RegQueryInfoKeyA(of, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, &time),
                  ERROR_SUCCESS);
        return time.dwLowDateTime;
    };
    SecondProcess peer("registry_peer"), reader("registry_reader");
    EXPECT_EQ(peer.Hear(), "ready");
    EXPECT_EQ(reader.Hear(), "ready");
    const std::string filler(5000, 'f');
    for (int i = 1; i <= 1000; ++i) {
        key.Set("counter", std::to_string(i));
        key.Set("filler", filler, REG_BINARY);
    }
    EXPECT_LT(File_Size(), 2u << 20) << "5 MB were written";
    reader.Tell("enough");
    EXPECT_EQ(reader.Hear(), "fine");
    EXPECT_EQ(reader.Hear(), "1000");
    EXPECT_EQ(reader.Hear(), "0");
    EXPECT_EQ(key.Get("by the reader"), "set");
    peer.Tell("set asleep meanwhile");
    EXPECT_EQ(peer.Hear(), "0");
    EXPECT_EQ(key.Get("asleep meanwhile"), "asleep meanwhile");
    EXPECT_EQ(gone.Get(""), "(1018)");
    peer.Kill();
    peer.Wait();

    const DWORD key_time = Low_Time(key), sub_time = Low_Time(beside);
    Compact(1);
    ASSERT_TRUE(Enter_Machine(machine.Folder().c_str()));
    const TestKey again("shared");
    EXPECT_EQ(again.Get("constant"), "constant");
    EXPECT_EQ(again.Get("filler"), filler);
    EXPECT_THAT(TestKey("shared\\sub").Values(), ElementsAre("z", "a", ""));
    EXPECT_EQ(Low_Time(again), key_time) << "a rewriting is no change";
    EXPECT_EQ(Low_Time(TestKey("shared\\sub")), sub_time);
    EXPECT_THAT(again.Subkeys(), ElementsAre("Sub"));
    EXPECT_FALSE(std::filesystem::exists(machine.Path(File) + std::string(".new")));
}

TEST_F(RegistryProcesses, NeverTakeAFreshKeyForADeletedOne) {
    TestKey("churn");
    SecondProcess holder("registry_peer");
    EXPECT_EQ(holder.Hear(), "ready");
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "shared"), ERROR_SUCCESS);
    Compact(1); // nothing in the file tells of the deleted key any more
    SecondProcess maker("registry_peer");
    EXPECT_EQ(maker.Hear(), "ready");
    maker.Tell("set value");
    EXPECT_EQ(maker.Hear(), "0");
    holder.Tell("get value");
    EXPECT_EQ(holder.Hear(), "(1018)");
}

TEST_F(RegistryProcesses, LeaveNothingOpen) {
    const auto Open_Descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    TestKey("warm-up").Set("value", "value");
    const auto before = Open_Descriptors();
    const std::string elsewhere = machine.Path("drive_c/another-machine");
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(Enter_Machine(round % 2 == 0 ? elsewhere.c_str() : machine.Folder().c_str()));
        const TestKey key("key"), missing_value("key\\sub");
        EXPECT_EQ(key.Get("round"), round < 2 ? Missing : std::to_string(round - 2))
            << "machines share nothing";
        key.Set("round", std::to_string(round));
        Compact(1);
        HKEY none = nullptr;
        EXPECT_EQ(RegOpenKeyA(key, "none", &none), ERROR_FILE_NOT_FOUND);
        RegFlushKey(key);
    }
    EXPECT_EQ(Open_Descriptors(), before);
    Enter_Machine(machine.Folder().c_str());
    Remove_Machine(elsewhere.c_str());
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

// A writer and those that take its place. It remembers what was told to be set.
class WriterSlot {
  public:
    WriterSlot(int slot, int filler)
        : name_(std::to_string(slot)), filler_(std::to_string(filler)), told_(Names_Per_Writer, -1) {
        Start();
        listener_ = std::thread([this] {
            do Listen();
            while (Replace());
        });
    }
    /// Kills the writer; another takes its place unless this was the end.
    void Kill(bool the_end = false) {
        {
            std::lock_guard guard(lock_);
            ending_ = the_end;
            writer_->Kill();
        }
        if (the_end) listener_.join();
    }
    /// Checks what was told against the registry.
    void Expect_All_Set() const {
        const TestKey key("writers"), own("writers\\" + name_);
        for (int i = 0; i < Names_Per_Writer; ++i) {
            if (told_[static_cast<std::size_t>(i)] < 0) continue;
            const std::string found = key.Get(name_ + "-" + std::to_string(i));
            EXPECT_GE(std::atoi(found.c_str()), told_[static_cast<std::size_t>(i)])
                << name_ << "-" << i << found;
        }
        EXPECT_GE(std::stoi(own.Get("last")), last_);
    }
    int Told() const { return count_; }

  private:
    void Start() {
        writer_ = std::make_unique<SecondProcess>("registry_writer",
                                                  std::vector{name_, std::to_string(last_ + 1), filler_});
    }
    void Listen() {
        for (std::string line = writer_->Hear(); !line.empty(); line = writer_->Hear()) {
            last_ = std::stoi(line);
            told_[static_cast<std::size_t>(last_ % Names_Per_Writer)] = last_;
            ++count_;
        }
    }
    bool Replace() {
        std::lock_guard guard(lock_);
        EXPECT_EQ(writer_->Wait(), -SIGKILL) << writer_->Errors();
        EXPECT_EQ(writer_->Errors(), "");
        if (!ending_) Start();
        return !ending_;
    }

    const std::string name_, filler_;
    std::vector<int> told_; // of each name the last number that is set
    int last_ = -1;
    std::atomic<int> count_{0};
    std::mutex lock_; // of what follows
    std::unique_ptr<SecondProcess> writer_;
    bool ending_ = false;
    std::thread listener_;
};

TEST_F(RegistryProcesses, KeepEveryValueThoughWritersAreKilled) {
    std::vector<std::unique_ptr<WriterSlot>> slots;
    for (int slot = 0; slot < 8; ++slot) slots.push_back(std::make_unique<WriterSlot>(slot, 200));
    for (int round = 0; round < 30; ++round) {
        std::this_thread::sleep_for(100ms);
        slots[static_cast<std::size_t>(round * 3 % 8)]->Kill();
    }
    int told = 0;
    for (const auto &slot : slots) slot->Kill(true), told += slot->Told();
    EXPECT_GT(told, 1000);
    for (const auto &slot : slots) slot->Expect_All_Set();
    ASSERT_TRUE(Enter_Machine(machine.Folder().c_str()));
    for (const auto &slot : slots) slot->Expect_All_Set();
    EXPECT_EQ(TestKey("writers").Subkeys().size(), 8u);
    EXPECT_LT(File_Size(), 4u << 20);
}

TEST_F(RegistryProcesses, KeepEveryValueThoughKilledWhileRewriting) {
    // Much that lives and little else: the writer spends most of its time on rewriting the file.
    machine.Write(File + std::string(".new"), "left behind");
    WriterSlot writer(0, 4000);
    std::srand(11);
    for (int round = 0; round < 40; ++round) {
        const int enough = writer.Told() + 20;
        while (writer.Told() < enough) std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(std::chrono::milliseconds(std::rand() % 20));
        writer.Kill();
    }
    writer.Kill(true);
    writer.Expect_All_Set();
    Compact(1);
    writer.Expect_All_Set();
    EXPECT_EQ(TestKey("writers").Values().size(), static_cast<std::size_t>(Names_Per_Writer));
}

} // namespace
