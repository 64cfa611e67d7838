#include <reference_suite/components/component_store.h>
#include <tests/reference_suite/installed_components.h>

#include <tests/support/second_process.h>
#include <tests/support/test_memory.h>

#include <csignal>

// "lock", "unlock", "commit", "get", or a number to set; tells the code or the number.
SECOND_PROCESS(configuration_client) {
    CoInitialize(nullptr);
    const Client client("Home");
    for (std::string line = process.Hear(); !line.empty(); line = process.Hear()) {
        const long result = line == "lock"     ? client.Lock()
                            : line == "unlock" ? client.Unlock()
                            : line == "commit" ? client.Commit()
                            : line == "get"    ? 0
                                               : client.Set(Option_DURT, line);
        process.Tell(line == "get" ? client.Get(Option_DURT) : std::to_string(result));
    }
    return 0;
}

// Commits as fast as it can, two options that are always the same.
SECOND_PROCESS(busy_configuration) {
    CoInitialize(nullptr);
    const Client client("Home");
    client.Lock();
    for (int i = 0;; ++i) {
        const std::string text = std::to_string(i) + std::string(200, 'x');
        client.Set(Option_DURT, text);
        client.Set(Option_DUWT, text);
        client.Commit();
        if (i == 0) process.Tell("going");
    }
}

namespace {

struct StoredComponents : InstalledComponents {
    static std::string Said(SecondProcess &process, const std::string &line) {
        process.Tell(line);
        return process.Hear();
    }
};

TEST_F(StoredComponents, AreChangedByOneObjectAtATimeAndWhenItCommits) {
    const Client one("Home"), two("HOME"), elsewhere("Travel");
    SecondProcess other("configuration_client");
    for (const long refused : {one.Set(Option_DURT, "5"), one.Commit(), one.Unlock()})
        EXPECT_EQ(refused, E_UNEXPECTED) << "without the lock";
    for (const Client *client : {&one, &one, &elsewhere}) EXPECT_EQ(client->Lock(), 0);
    EXPECT_EQ(two.Lock(), ERROR_SHARING_VIOLATION) << "on the same thread too";
    const TestKey key(Component_Key(Component_Configuration, "Caf\xE9"), HKEY_LOCAL_MACHINE);
    const Client small("Caf\xE9"), large("CAF\xC9");
    EXPECT_EQ(small.Lock(), 0);
    EXPECT_EQ(large.Lock(), ERROR_SHARING_VIOLATION) << "they are one to the registry";
    EXPECT_EQ(Said(other, "lock"), std::to_string(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(one.Set(Option_DURT, "5"), 0);
    EXPECT_EQ(one.Get(Option_DURT) + two.Get(Option_DURT) + Said(other, "get"), "533");
    EXPECT_EQ(one.Unlock(), 0);
    EXPECT_EQ(one.Get(Option_DURT), "3") << "it was dropped";

    for (const char *step : {"lock", "9", "commit"}) EXPECT_EQ(Said(other, step), "0");
    EXPECT_EQ(two.Lock(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Said(other, "unlock"), "0");
    EXPECT_EQ(two.Lock(), 0);
    EXPECT_EQ(two.Set(Option_DUWT, "8"), 0);
    EXPECT_EQ(two.Commit(), 0);
    EXPECT_EQ(one.Get(Option_DURT) + one.Get(Option_DUWT), "98") << "nothing of others is undone";
}

TEST_F(StoredComponents, HaveNoLockAndNoHalfOfAChangeOfAKilledProcess) {
    for (DWORD i = 0; i < 10; ++i) {
        SecondProcess busy("busy_configuration");
        ASSERT_EQ(busy.Hear(), "going");
        Sleep(i);
        busy.Kill();
        EXPECT_EQ(busy.Wait(), -SIGKILL);
        const Client client("Home");
        EXPECT_EQ(client.Lock(), 0);
        EXPECT_EQ(client.Get(Option_DURT), client.Get(Option_DUWT));
        EXPECT_EQ(client.Get(Option_Location), "Home");
    }
}

TEST_F(StoredComponents, HoldToTheirLimits) {
    const Client client("Home");
    ASSERT_EQ(client.Lock(), 0);
    EXPECT_EQ(client.Set(Option_DURT, std::string(255, 't')), E_INVALIDARG);
    EXPECT_EQ(client.Set(Option_DURT, std::string(254, 't')), 0);
    EXPECT_EQ(client.Get(Option_DURT), std::string(254, 't'));
    char unended[4] = {'T', 'R', 'U', 'E'};
    EXPECT_EQ(client.values->Set_Value(Option_DUWT.code, unended, 4), 0);
    const struct {
        unsigned long code;
        long size, result;
        const char *text;
    } reads[] = {{Option_DUWT.code, 5, 0, "TRUE"},
                 {Option_DUWT.code, 4, ERROR_MORE_DATA, ""},
                 {Option_DUWT.code, 0, E_INVALIDARG, "before"},
                 {0, 5, ERROR_FILE_NOT_FOUND, ""}};
    for (const auto &[code, size, result, text] : reads) {
        char buffer[8] = "before";
        EXPECT_EQ(client.values->Get_Value(code, buffer, size), result) << size;
        EXPECT_STREQ(buffer, text);
    }
    long result = 0;
    for (unsigned long code = 1; code < 500 && result == 0; ++code)
        result = client.Set({code, 0}, std::string(254, 'n'));
    EXPECT_EQ(result, ERROR_NOT_ENOUGH_QUOTA);
    EXPECT_EQ(client.Commit(), 0) << "of what there was room for";
    EXPECT_EQ(Client("Home").Get({1, 0}), std::string(254, 'n'));
}

TEST_F(StoredComponents, OpenWhatThereIs) {
    const std::string longest(129, 'n');
    TestKey(std::string(Store) + "Configurations\\" + longest, HKEY_LOCAL_MACHINE);
    const Client client("Home");
    const struct {
        std::string name;
        long kind, result;
    } openings[] = {{longest, 0, 0},
                    {longest + "n", 0, E_INVALIDARG},
                    {"..\\Locations\\Home", 0, E_INVALIDARG},
                    {"Hotel", 2, E_INVALIDARG},
                    {"Home", 0, 0},
                    {"Nowhere", 0, ERROR_FILE_NOT_FOUND}};
    for (const auto &[name, kind, result] : openings) EXPECT_EQ(client.Open(name, kind), result) << name;
    EXPECT_EQ(client.Get(Option_Connection_Method), "Modem") << "the last that was there";
    OwnedInterface<IConfigSimpleAccessInterface> simple;
    ASSERT_EQ(simple.Query(client.storage.Get(), IID_IConfigSimpleAccessInterface), S_OK);
    char name[] = "Office LAN", text[8];
    long size = sizeof text;
    EXPECT_EQ(simple->Open_By_Name(name), 0);
    EXPECT_EQ(simple->Read_Setting(Option_Connection_Method.code, text, &size), 0);
    EXPECT_EQ(std::string(text) + std::to_string(size), "LAN4");
}

TEST_F(StoredComponents, LeaveStoredTextsAloneThatTheyCannotRead) {
    const std::string path = std::string(Store) + "Configurations\\Home";
    const TestKey key(path, HKEY_LOCAL_MACHINE);
    const struct {
        std::string bytes;
        DWORD type;
        long lock;
        const char *text;
    } stored[] = {{std::string("DURT=4\0", 8), REG_SZ, ERROR_INVALID_DATA, ""},
                  {"DURT=4" + std::string(70000, '\0'), REG_MULTI_SZ, ERROR_INVALID_DATA, ""},
                  {std::string("=\0DURT\0DURT=4\0\0DURT=5\0", 23), REG_MULTI_SZ, 0, "4"},
                  {"DURT=4", REG_MULTI_SZ, 0, "4"}};
    for (const auto &[bytes, type, lock, text] : stored) {
        key.Set("Options", bytes, type);
        const Client client("Home");
        EXPECT_EQ(client.Get(Option_DURT), text);
        EXPECT_EQ(client.Lock(), lock);
        EXPECT_EQ(client.Commit(), lock == 0 ? 0 : E_UNEXPECTED);
        EXPECT_TRUE(lock == 0 || key.Get("Options") == bytes) << "written over";
    }
    const Client client("Home");
    EXPECT_EQ(client.Lock(), 0);
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, path.c_str());
    EXPECT_EQ(client.Commit(), ERROR_FILE_NOT_FOUND) << "a component that is gone does not come back";
}

TEST_F(StoredComponents, StandTheLackOfMemoryAtEveryStep) {
    const Client client("Home");
    const auto change = [&](const std::string &text) {
        const bool stored = client.Lock() == 0 && client.Set(Option_DURT, text) == 0 && client.Commit() == 0;
        client.Unlock();
        return stored;
    };
    std::string expected = client.Get(Option_DURT);
    bool refused = true;
    for (long nth = 1; refused; ++nth) {
        const std::string text = std::to_string(nth) + std::string(200, 'n');
        {
            const FailingMemory memory(nth);
            if (change(text)) expected = text;
            refused = memory.Refused() > 0;
        }
        EXPECT_EQ(client.Get(Option_DURT), expected);
    }
    EXPECT_EQ(expected.back(), 'n') << "it was done in the end";
}

TEST_F(StoredComponents, PhoneBooksKnowTheirNumbers) {
    OwnedInterface<IPhonebookInterface> book;
    OwnedInterface<IComponentStorageInterface> storage;
    ASSERT_EQ(book.Create(CLSID_PhonebookComponent, IID_IPhonebookInterface), S_OK);
    ASSERT_EQ(storage.Query(book.Get(), IID_IComponentStorageInterface), S_OK);
    const auto test = [&](std::string name, std::string number) {
        return storage->Run_Component_Command(Command_Test_Number, name.data(), number.data(), 0, 0);
    };
    for (const char *number : {"+1 (206) 555-0100", "+12065550100", "+44 (171) 555-0142"})
        EXPECT_EQ(test("public", number), 0) << number;
    for (const char *number : {"+1 (206) 555-010", "+1 (206) 555-01000", "+12"})
        EXPECT_EQ(test("Public", number), ERROR_NOT_FOUND) << number;
    for (const char *number : {"1 (206) 555-0100", "+1 (206) 555-0100x", "+", ""})
        EXPECT_EQ(test("Public", number), E_INVALIDARG) << number;
    EXPECT_EQ(test("Home", "+12065550100"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(test("", "+12065550100"), E_INVALIDARG);
}

} // namespace
