// What the registry's file stands: cut, flipped, foreign, full, and not to be written.

#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

constexpr std::size_t Header_Size = 48;

class RegistryStorage : public RegistryTest {
  protected:
    /// From here on the registry is what these bytes make of it. Handles of before are worth nothing.
    void Store(const std::string &bytes) const {
        machine.Write(File, bytes);
        Reopen();
    }
    /// What the machine said on standard error meanwhile.
    template <class Work>
    static std::string Said_During(Work work) {
        ::testing::internal::CaptureStderr();
        work();
        return ::testing::internal::GetCapturedStderr();
    }
};

std::string Flipped(std::string bytes, std::size_t at) {
    bytes[at] = static_cast<char>(bytes[at] ^ 0x41);
    return bytes;
}

TEST_F(RegistryStorage, GivesBackAllThatWasSet) {
    char class_name[] = "class", text[10];
    TestKey("Made\\Deep", HKEY_LOCAL_MACHINE, class_name);
    const std::string large(300000, 'L'), awkward("a\0b\xFF", 4);
    const TestKey stale("key");
    for (const char *name : {"z", "", "a", "gone"}) stale.Set(name, name);
    stale.Set("z", large, REG_BINARY);
    stale.Set("awkward", awkward, 0x12345678);
    RegDeleteValueA(stale, "gone");
    TestKey("key\\gone");
    RegDeleteKeyA(stale, "gone");
    Reopen();
    EXPECT_EQ(stale.Get("z"), "(6)") << "its machine was left";
    const TestKey key("key");
    EXPECT_THAT(key.Values(), ElementsAre("z", "", "a", "awkward"));
    EXPECT_EQ(key.Get("z"), large);
    EXPECT_EQ(key.Get("awkward"), awkward);
    EXPECT_THAT(key.Subkeys(), IsEmpty());
    DWORD type = 0, size = 10;
    RegQueryValueExA(key, "awkward", nullptr, &type, nullptr, nullptr);
    EXPECT_EQ(type, 0x12345678u);
    RegQueryInfoKeyA(TestKey("Made\\Deep", HKEY_LOCAL_MACHINE), text, &size, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(text, "class");
    EXPECT_EQ(fs::status(machine.Path(File)).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(machine.Path("registry")).permissions(), fs::perms(0700));
}

TEST_F(RegistryStorage, ComesBackWhenItsFolderIsDeletedUnderAProgram) {
    const TestKey key("key");
    key.Set("value", "value");
    for (const char *deleted : {"registry/registry.log", "registry/registry.lock", "registry"}) {
        fs::remove_all(machine.Path(deleted));
        EXPECT_EQ(key.Set("set", deleted), ERROR_SUCCESS) << deleted;
        EXPECT_EQ(SecondProcess("registry_peer").Hear(), "ready") << "a fresh process reads what is stored";
        EXPECT_EQ(key.Get("value"), "value");
    }
    Reopen();
    EXPECT_EQ(TestKey("key").Get("value"), "value");
    EXPECT_EQ(TestKey("key").Get("set"), "registry");
}

TEST_F(RegistryStorage, LosesNoMoreThanACutOrFlippedLastRecord) {
    TestKey("key").Set("kept", "kept");
    const std::size_t before = Stored().size();
    TestKey("key").Set("last", "last");
    const std::string whole = Stored();
    std::vector<std::string> damaged;
    for (std::size_t size = before; size < whole.size(); ++size) damaged.push_back(whole.substr(0, size));
    for (std::size_t at = before; at < whole.size(); ++at) damaged.push_back(Flipped(whole, at));
    damaged.push_back(whole.substr(0, before) + std::string(5000, '\0'));
    damaged.push_back(whole.substr(0, before) + whole.substr(Header_Size) + whole);
    for (std::size_t row = 0; row < damaged.size(); ++row) {
        SCOPED_TRACE(row);
        Store(damaged[row]);
        EXPECT_EQ(Last_Change(HKEY_CURRENT_USER, nullptr), ERROR_SUCCESS);
        EXPECT_EQ(Stored(), damaged[row]) << "a reader cuts nothing off";
        const TestKey key("key");
        EXPECT_THAT(key.Values(), ElementsAre("kept"));
        EXPECT_EQ(key.Set("next", "next"), ERROR_SUCCESS);
        EXPECT_EQ(Stored().size(), whole.size()) << "a writer does";
        Reopen();
        EXPECT_THAT(TestKey("key").Values(), ElementsAre("kept", "next"));
        EXPECT_EQ(TestKey("key").Get("kept"), "kept");
    }
}

TEST_F(RegistryStorage, LosesNoMoreThanADamagedRecordInTheMiddle) {
    const TestKey first("first");
    first.Set("changed", "old");
    first.Set("doomed", "back");
    TestKey("doomed");
    const std::function<void()> changes[] = {
        [&] { first.Set("changed", "new"); },
        [&] { RegDeleteValueA(first, "doomed"); },
        [] { RegDeleteKeyA(HKEY_CURRENT_USER, "doomed"); },
        [] { TestKey("made"); },
    };
    std::vector<std::size_t> bounds = {Stored().size()};
    for (const auto &change : changes) change(), bounds.push_back(Stored().size());
    TestKey("made").Set("inside", "inside");
    TestKey("made\\below").Set("deep", "deep");
    first.Set("after", "after");
    const std::string whole = Stored();
    const auto Expect_Lost = [](std::size_t row) {
        const TestKey key("first"), made("made"), rescued("Rescued Keys", HKEY_LOCAL_MACHINE);
        EXPECT_EQ(key.Get("changed"), row == 0 ? "old" : "new");
        EXPECT_EQ(key.Get("doomed"), row == 1 ? "back" : Missing);
        EXPECT_EQ(key.Get("after"), "after");
        EXPECT_EQ(TestKey("doomed").disposition, row == 2 ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY);
        EXPECT_EQ(made.Get("inside"), row == 3 ? Missing : "inside");
        ASSERT_EQ(rescued.Subkeys().size(), row == 3 ? 1u : 0u);
        if (row != 3) return;
        const TestKey saved(rescued.Subkeys()[0], rescued);
        EXPECT_EQ(saved.Get("inside"), "inside") << "what was in the key is still to be had";
        EXPECT_EQ(TestKey("below", saved).Get("deep"), "deep");
    };
    const std::string said = Said_During([&] {
        for (std::size_t row = 0; row < std::size(changes); ++row) {
            for (std::size_t at = bounds[row]; at < bounds[row + 1]; ++at) {
                SCOPED_TRACE(std::to_string(row) + ", " + std::to_string(at - bounds[row]));
                Store(Flipped(whole, at));
                Expect_Lost(row);
            }
        }
    });
    EXPECT_THAT(said, HasSubstr("damaged bytes are passed over"));
}

TEST_F(RegistryStorage, TakesNoImageOfARecordForOne) {
    const TestKey key("key");
    key.Set("value", "old");
    const std::string image = Stored();
    key.Set("value", "new");
    const std::size_t before = Stored().size();
    key.Set("8 chars.", image + image, REG_BINARY); // so that the images lie where records may begin
    key.Set("after", "after");
    const std::string whole = Stored();
    for (const std::size_t at : {0u, 4u, 8u, 39u}) {
        Said_During([&] {
            Store(Flipped(whole, before + at));
            EXPECT_EQ(TestKey("key").Get("value"), "new");
        });
        EXPECT_THAT(TestKey("key").Values(), ElementsAre("value", "after")) << at;
    }
    Store(image + whole.substr(Header_Size));
    EXPECT_EQ(TestKey("key").Get("value"), "old") << "moved records are none";
    Store("");
    TestKey("other");
    Store(Stored().substr(0, Header_Size) + whole.substr(Header_Size));
    EXPECT_THAT(TestKey("", HKEY_CURRENT_USER).Subkeys(), IsEmpty()) << "nor are those of another file";
}

TEST_F(RegistryStorage, RefusesAFileThatIsNoRegistryAndLeavesItAlone) {
    TestKey("key").Set("value", "value");
    const std::string whole = Stored();
    std::vector<std::string> wrong = {std::string(Header_Size, '\0'), "name = value\n" + whole};
    for (std::size_t at = 0; at < Header_Size; ++at) {
        wrong.push_back(Flipped(whole, at));
        if (at > 0) wrong.push_back(whole.substr(0, at));
    }
    for (const std::string &bytes : wrong) {
        const std::string said = Said_During([&] {
            Store(bytes);
            EXPECT_EQ(TestKey("key").error, ERROR_BADDB);
            EXPECT_EQ(Set_Nothing(HKEY_CURRENT_USER), ERROR_BADDB);
            EXPECT_EQ(RegFlushKey(HKEY_LOCAL_MACHINE), ERROR_BADDB);
        });
        EXPECT_EQ(Stored(), bytes);
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
    machine.Write(File, whole);
    EXPECT_EQ(TestKey("key").Get("value"), "value") << "put right, it is read again";
    Store("");
    EXPECT_EQ(TestKey("key").disposition, REG_CREATED_NEW_KEY) << "an empty file is a fresh one";

    for (const char *name : {"registry/registry.log", "registry/registry.lock", "registry"}) {
        fs::rename(machine.Path(name), machine.Path("elsewhere"));
        fs::create_symlink(machine.Path("elsewhere"), machine.Path(name));
        Reopen();
        EXPECT_EQ(Set_Nothing(HKEY_CURRENT_USER), ERROR_ACCESS_DENIED) << name;
        fs::remove(machine.Path(name));
        fs::rename(machine.Path("elsewhere"), machine.Path(name));
    }
}

std::string Codes(std::initializer_list<LONG> codes) {
    std::string text;
    for (const LONG code : codes) text += std::to_string(code) + " ";
    return text;
}

// Sets values until the file may grow no more; then with room again.
SECOND_PROCESS(registry_on_a_full_disk) {
    std::signal(SIGXFSZ, SIG_IGN);
    const TestKey key("key");
    const rlimit limit = {std::stoul(process.Arguments().at(0)), RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const LONG set = key.Set("value", std::string(100, 'n')), made = TestKey("new").error;
    process.Tell(Codes({set, made, RegFlushKey(key)}) + key.Get("value"));
    process.Hear();
    const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &none);
    process.Tell(std::to_string(key.Set("value", "new")));
    return 0;
}

TEST_F(RegistryStorage, ChangesNothingOnAFullDisk) {
    TestKey("key").Set("value", "old");
    const std::string before = Stored();
    for (const std::size_t room : {0u, 8u, 47u}) {
        SecondProcess writer("registry_on_a_full_disk", {std::to_string(before.size() + room)});
        EXPECT_EQ(writer.Hear(), Codes({ERROR_DISK_FULL, ERROR_DISK_FULL, 0}) + "old") << room;
        EXPECT_EQ(Stored(), before) << "what was half written is cut off";
        EXPECT_EQ(TestKey("key").Get("value"), "old");
        writer.Tell("room again");
        EXPECT_EQ(writer.Hear(), "0");
        EXPECT_EQ(TestKey("key").Get("value"), "new");
        EXPECT_EQ(writer.Wait(), 0);
        Store(before);
    }
}

SECOND_PROCESS(registry_without_write_access) {
    if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) return 1;
    HKEY key = nullptr;
    DWORD size = 0;
    process.Tell(
        Codes({RegOpenKeyA(HKEY_CURRENT_USER, "key", &key),
               RegQueryValueExA(key, "value", nullptr, nullptr, nullptr, &size), Set_Nothing(key),
               RegDeleteKeyA(key, ""), TestKey("key").error, TestKey("other").error, RegFlushKey(key)}));
    RegCloseKey(key);
    return 0;
}

TEST_F(RegistryStorage, IsReadWhereItCannotBeWritten) {
    TestKey("key").Set("value", "value");
    const auto For_All = [&](uid_t owner, unsigned folder_mode, unsigned file_mode) {
        std::vector<fs::path> paths = {machine.Folder()};
        for (const auto &entry : fs::recursive_directory_iterator(machine.Folder())) paths.push_back(entry);
        for (const fs::path &path : paths) {
            fs::permissions(path, fs::perms(fs::is_directory(path) ? folder_mode : file_mode));
            if (geteuid() == 0) (void)!chown(path.c_str(), owner, static_cast<gid_t>(-1));
        }
    };
    for (const bool files_too : {false, true}) {
        for (const char *lock : {"names.lock", "registry/registry.lock"}) {
            if (files_too) fs::remove(machine.Path(lock));
        }
        const std::string before = Stored();
        For_All(geteuid() == 0 ? 65534 : geteuid(), 0500, files_too ? 0400 : 0600);
        SecondProcess guest("registry_without_write_access");
        EXPECT_EQ(guest.Hear(),
                  Codes({0, 0, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED, 0, ERROR_ACCESS_DENIED, 0}));
        For_All(geteuid(), 0700, 0600);
        EXPECT_EQ(Stored(), before);
    }
}

} // namespace
