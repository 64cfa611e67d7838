// The registry of running instances, with copies of a program in processes of their own.

#include <tests/shared_state/instance_copy.h>
#include <tests/support/failing_new.h>
#include <tests/support/handles.h>
#include <tests/support/window_verbs.h>

#include <atomic>
#include <climits>
#include <filesystem>
#include <optional>
#include <random>
#include <sstream>
#include <thread>

namespace {

std::string Number_Of(HWND window) {
    return std::to_string(reinterpret_cast<unsigned long>(window));
}

void Look_At_Messages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
}

std::string Obey(const std::string &line, HWND window, HWND popup) {
    std::istringstream words(line);
    std::string command, first, second;
    words >> command >> first >> second;
    if (command == "first") return std::to_string(First_Instance(first.c_str(), second.c_str(), window));
    if (command == "available")
        return std::to_string(Instance_Available(first.c_str(), second.empty() ? nullptr : second.c_str()));
    if (command == "update") Update_Instance(nullptr, window);
    if (command == "title") SetWindowTextA(window, first.c_str());
    if (command == "minimise") ShowWindow(window, SW_MINIMIZE);
    if (command == "hide") ShowWindow(window, SW_HIDE);
    if (command == "popup") ShowWindow(popup, SW_SHOW);
    if (command == "handles") return std::to_string(Open_Handle_Count());
    return "done";
}

} // namespace

SECOND_PROCESS(instance_copy) {
    TestWindow window(WS_OVERLAPPEDWINDOW | WS_VISIBLE, {0, 0, 100, 50}, nullptr, 0, {},
                      process.Arguments()[0].c_str());
    TestWindow popup(WS_POPUP, {0, 0, 10, 10}, window);
    Look_At_Messages(); // idle from here on
    process.Tell(Number_Of(window));
    process.Tell(Number_Of(popup));
    for (std::string line = process.Hear(); !line.empty(); line = process.Hear())
        process.Tell(Obey(line, window, popup));
    return 0;
}

SECOND_PROCESS(instance_latecomer) {
    const auto tell = [&] { process.Tell(std::to_string(Instance_Available("K", "S"))); };
    tell();
    process.Hear();
    tell(), tell();
    return 0;
}

namespace {

class Instances : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        raw.emplace();
        copy.emplace();
    }
    void TearDown() override {
        copy.reset();
        raw.reset();
        WindowTest::TearDown();
    }
    HWND Dead_Window() {
        InstanceCopy dead;
        return dead.window;
    }

    std::optional<RawInstances> raw;
    std::optional<InstanceCopy> copy;
};

// For what asks in this process, which keeps the share and its handles from then on.
class InstancesHere : public Instances {
    void SetUp() override {
        Instance_Available("", "");
        Instances::SetUp();
    }
};

TEST_F(Instances, AreOneForTheSameKeysWhileTheFirstLives) {
    EXPECT_EQ(copy->First(), 1);
    EXPECT_EQ(raw->Text(), "K/S=Title");
    EXPECT_EQ(raw->table->Records[0].Window, copy->window);
    InstanceCopy other("Other");
    const std::string handles = other.Do("handles");
    EXPECT_EQ(other.First(), 0);
    EXPECT_EQ(raw->Text(), "K/S=Title") << "nothing is added";
    const std::tuple<const char *, const char *, int> rows[] = {{"K", "S", 1}, {"K", "", 1},   {"k", "", 0},
                                                                {"K", "s", 0}, {"K", "SS", 0}, {"", "", 0}};
    for (const auto &[key, subkey, available] : rows)
        EXPECT_EQ(other.Available(key, subkey), available) << key << "/" << subkey;
    EXPECT_EQ(other.Do("handles"), handles);
    EXPECT_EQ(other.First("K", "s"), 1);
    EXPECT_EQ(raw->Text(), "K/S=Title K/s=Other");
}

TEST_F(Instances, CountByTheTitleThatTheirWindowHas) {
    copy->First();
    InstanceCopy other("Other");
    copy->Do("title Changed");
    EXPECT_EQ(other.Available(), 0);
    EXPECT_EQ(raw->Text(), "K/S=Title") << "left in place";
    copy->Do("update");
    EXPECT_EQ(raw->Text(), "K/S=Changed");
    EXPECT_EQ(other.First(), 0);
    copy->Do("title Again");
    EXPECT_EQ(other.First(), 1);
    EXPECT_EQ(raw->Text(), "K/S=Other") << "removed, for it is somebody else's now";

    copy->Do("title " + std::string(300, 't'));
    EXPECT_EQ(copy->First("long"), 1);
    EXPECT_EQ(std::strlen(raw->table->Records[1].Title), 254u);
    EXPECT_EQ(other.First("long"), 0);
}

TEST_F(Instances, ComeToTheFrontWhenAnotherIsStarted) {
    copy->First();
    copy->Do("popup");
    copy->Do("minimise");
    InstanceCopy other("Other");
    EXPECT_EQ(other.Available(), 1);
    EXPECT_TRUE(IsIconic(copy->window)) << "asking activates nothing";
    EXPECT_EQ(other.First(), 0);
    EXPECT_FALSE(IsIconic(copy->window));
    EXPECT_EQ(GetForegroundWindow(), copy->popup);
}

// The window's thread looks for no message, as one that waits for the lock itself.
TEST_F(InstancesHere, OfTheOwnProcessAreAskedNothingUnderTheLock) {
    TestWindow window(WS_OVERLAPPEDWINDOW | WS_VISIBLE, {0, 0, 100, 50}, nullptr, 0, {}, "Own");
    EXPECT_TRUE(First_Instance("K", "S", window));
    ShowWindow(window, SW_MINIMIZE);
    std::thread([] { EXPECT_TRUE(Instance_Available("K", "S")); }).join();
    std::atomic<bool> answered{false};
    std::jthread asker([&] {
        EXPECT_FALSE(First_Instance("K", "S", nullptr));
        answered = true;
    });
    for (const DWORD start = GetTickCount(); GetTickCount() - start < 100;) {
        Update_Instance(nullptr, window);
        EXPECT_EQ(copy->Available(), 1) << "the lock is free";
    }
    EXPECT_FALSE(answered) << "it waits for this thread to look at its messages";
    while (!answered) Look_At_Messages();
    EXPECT_FALSE(IsIconic(window));
}

TEST_F(InstancesHere, LetNothingOutThatAWindowThrows) {
    bool throws = false;
    TestWindow window(
        WS_OVERLAPPEDWINDOW | WS_VISIBLE, {0, 0, 100, 50}, nullptr, 0,
        [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (throws && message != WM_NULL) throw 5;
            return std::nullopt;
        },
        "Own");
    EXPECT_TRUE(First_Instance("K", "S", window));
    ShowWindow(window, SW_MINIMIZE);
    throws = true;
    EXPECT_NO_THROW(EXPECT_TRUE(Instance_Available("K", "S")));
    EXPECT_NO_THROW(Update_Instance(nullptr, window));
    EXPECT_NO_THROW(EXPECT_FALSE(First_Instance("K", "S", window)));
    throws = false;
    EXPECT_EQ(copy->Available(), 1) << "the lock is free";
}

TEST_F(InstancesHere, KeepTheRecordsOfTheLivingWhateverMemoryFails) {
    copy->First();
    unsigned long at = 1;
    for (bool reached = true; reached && at < 200; ++at) {
        for (int call = 0; call < 3; ++call) {
            bool first = false;
            allocations_until_failure = at;
            if (call == 0) first = First_Instance("K", "S", nullptr);
            if (call == 1) Instance_Available("K", "S");
            if (call == 2) Update_Instance(nullptr, copy->window);
            reached = allocations_until_failure == 0;
            allocations_until_failure = 0;
            EXPECT_FALSE(first) << at;
            ASSERT_EQ(raw->Text(), "K/S=Title") << "allocation " << at << " of call " << call;
        }
    }
    EXPECT_GT(at, 2u);
}

TEST_F(Instances, RemoveAllStaleRecordsOfTheKeysAndNoOthers) {
    const HWND dead = Dead_Window();
    for (const char *key : {"K", "K", "other", "K"}) raw->Add(key, "Title", dead);
    raw->Add("K", "Former", copy->window);
    raw->Add("last", "Title", copy->window);
    EXPECT_EQ(copy->Available(), 0);
    EXPECT_EQ(raw->Text(), "other/S=Title K/S=Former last/S=Title");
    EXPECT_EQ(copy->First(), 1);
    EXPECT_EQ(raw->Text(), "other/S=Title last/S=Title K/S=Title");
}

TEST_F(Instances, RunUnregisteredWhenTheTableIsFull) {
    for (int i = 0; i < 48; ++i) raw->Add("key" + std::to_string(i), "Title", copy->window);
    InstanceCopy other("Other");
    EXPECT_EQ(other.First(), 1);
    EXPECT_EQ(raw->table->Count, 49);
    const InstanceTable before = *raw->table;
    EXPECT_EQ(copy->First("late"), 1);
    EXPECT_EQ(std::memcmp(&before, raw->table, sizeof before), 0);
    EXPECT_EQ(copy->First(), 0) << "the last one is found";
}

TEST_F(Instances, HaveKeysCutAlike) {
    const std::string key(300, 'k'), subkey(255, 's');
    EXPECT_EQ(copy->First(key, subkey), 1);
    EXPECT_EQ(raw->Text(), std::string(255, 'k') + "/" + subkey + "=Title");
    InstanceCopy other("Other");
    EXPECT_EQ(other.First(key, subkey), 0);
    EXPECT_EQ(other.First(key.substr(0, 254), subkey), 1);
}

// What no process of ours leaves there.
TEST_F(Instances, StandWhateverTheTableHolds) {
    for (const long count : {-1L, 50L, 51L, LONG_MIN, LONG_MAX}) {
        std::memset(raw->table, 0xFF, sizeof *raw->table);
        raw->table->Count = count;
        const bool full = count > 0;
        EXPECT_EQ(copy->Available(), 0) << count;
        copy->Do("update");
        EXPECT_EQ(copy->First(), 1) << count;
        EXPECT_EQ(copy->Available(), full ? 0 : 1) << count;
    }
    // A change that was cut short.
    *raw->table = {};
    raw->Add("torn", "Title", nullptr);
    raw->Add("K", "Title", copy->window);
    raw->Add("K", "Title", copy->window);
    EXPECT_EQ(copy->First(), 0);
    EXPECT_EQ(raw->Text(), "K/S=Title K/S=Title");
}

TEST_F(Instances, AreSetUpLateWhereTheTableCouldNotBeHad) {
    raw.reset();
    copy->Kill();
    std::optional<TestHandle> in_the_way(CreateMutexA(nullptr, FALSE, "INSTANCESHARE"));
    InstanceCopy late;
    EXPECT_EQ(late.First(), 0);
    EXPECT_EQ(late.Available(), 0);
    in_the_way.reset();
    InstanceCopy other("Other");
    EXPECT_EQ(other.First(), 1);
    EXPECT_EQ(late.Available(), 0) << "sets up";
    EXPECT_EQ(late.Available(), 1);
    raw.emplace();
}

TEST_F(Instances, AreSetUpLateWhereTheMachineCouldNotBeHad) {
    copy->First();
    const std::filesystem::path way = machine.Path("drive_c/way"), folder = machine.Folder();
    machine.Write("drive_c/way", "not a folder yet");
    setenv("KELMARA_MACHINE", (way / folder.filename()).c_str(), 1);
    SecondProcess late("instance_latecomer");
    EXPECT_EQ(late.Hear(), "0");
    std::filesystem::remove(way);
    std::filesystem::create_directory_symlink(folder.parent_path(), way);
    late.Tell("go");
    EXPECT_EQ(late.Hear(), "0") << "sets up";
    EXPECT_EQ(late.Hear(), "1");
    setenv("KELMARA_MACHINE", folder.c_str(), 1);
}

TEST_F(Instances, WaitForTheLockButAreLoadedWithoutIt) {
    const TestHandle mutex(CreateMutexA(nullptr, FALSE, "InstanceMasterMutex"));
    ASSERT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    InstanceCopy other("Other");
    other.Begin("first K S");
    Sleep(50);
    EXPECT_EQ(raw->table->Count, 0);
    ReleaseMutex(mutex);
    EXPECT_EQ(other.Hear(), "1");
}

} // namespace

// Starts where there is no machine yet, and enters one.
SECOND_PROCESS(instance_traveller) {
    if (process.Arguments().empty()) return 0;
    if (!Enter_Machine(process.Arguments()[0].c_str())) return 1;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 6; ++i)
        threads.emplace_back([&] { process.Tell(std::to_string(Instance_Available("K", "S"))); });
    threads.clear();
    return First_Instance("K", "S", nullptr) ? 1 : 0;
}

namespace {

TEST_F(Instances, AreOfTheMachineThatTheProcessIsOn) {
    copy->First();
    const std::string nowhere = machine.Path("drive_c/nowhere");
    setenv("KELMARA_MACHINE", nowhere.c_str(), 1);
    SecondProcess idle("instance_traveller");
    EXPECT_EQ(idle.Wait(), 0);
    EXPECT_EQ(idle.Errors(), "");
    EXPECT_FALSE(std::filesystem::exists(nowhere)) << "loading the library makes no machine";

    std::filesystem::create_directories(nowhere);
    ASSERT_TRUE(Enter_Machine(nowhere.c_str()));
    for (int there = 0; there < 2; ++there) { // by now there is one to leave
        SecondProcess traveller("instance_traveller", {machine.Folder()});
        for (int i = 0; i < 6; ++i) EXPECT_EQ(traveller.Hear(), "1");
        EXPECT_EQ(traveller.Wait(), 0);
    }
    Enter_Machine(machine.Folder().c_str());
    setenv("KELMARA_MACHINE", machine.Folder().c_str(), 1);
}

} // namespace

// Makes stale records and removes them, over and over, until it is killed.
SECOND_PROCESS(instance_churner) {
    process.Tell("ready");
    for (unsigned i = 0;; ++i) {
        TestWindow window(WS_POPUP, {0, 0, 9, 9}, nullptr, 0, {}, "Churned");
        Look_At_Messages();
        const std::string key = "churn" + std::to_string(i % 5);
        First_Instance(key.c_str(), "S", window);
        SetWindowTextA(window, "Churned on");
        if (i % 2) Update_Instance(key.c_str(), window);
    }
}

namespace {

TEST_F(Instances, StandTwentyProcessesThatDieAtAnyMoment) {
    copy->First();
    std::mt19937 random(7);
    for (int round = 0; round < 2; ++round) {
        std::vector<std::unique_ptr<SecondProcess>> churners;
        for (int i = 0; i < 20; ++i) churners.push_back(std::make_unique<SecondProcess>("instance_churner"));
        for (const auto &churner : churners) ASSERT_EQ(churner->Hear(), "ready");
        for (const auto &churner : churners) {
            Sleep(random() % 20);
            churner->Kill();
        }
        churners.clear();
        InstanceCopy other("Other");
        EXPECT_EQ(other.First(), 0) << "the one that lives is there, once";
        EXPECT_EQ(copy->Available("K"), 1);
        for (int i = 0; i < 5; ++i) EXPECT_EQ(other.Available("churn" + std::to_string(i)), 0);
        EXPECT_EQ(raw->Text(), "K/S=Title");
    }
}

} // namespace
