// What the registry's file stands: cut, flipped, foreign, full, and not to be written.

#include <tests/platform/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char File[] = "registry/registry.log";
constexpr std::size_t Header_Size = 48;

class RegistryStorage : public MachineTest {
  protected:
    std::string Stored() const { return machine.Read(File); }
    /// From here on the registry is what these bytes make of it. Handles of before are worth nothing.
    void Store(const std::string &bytes) const {
        machine.Write(File, bytes);
        Reopen();
    }
    void Reopen() const { ASSERT_TRUE(Enter_Machine(machine.Folder().c_str())); }
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
    char class_name[] = "class";
    HKEY made = nullptr;
    RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Made\\Deep", 0, class_name, 0, KEY_READ, nullptr, &made, nullptr);
    RegCloseKey(made);
    const std::string large(300000, 'L'), awkward("a\0b\xFF", 4);
    {
        const TestKey key("key");
        for (const char *name : {"z", "", "a", "gone"}) key.Set(name, name);
        key.Set("z", large, REG_BINARY);
        key.Set("awkward", awkward, 0x12345678);
        RegDeleteValueA(key, "gone");
        TestKey("key\\gone");
        RegDeleteKeyA(key, "gone");
    }
    const TestKey stale("key");
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
    char text[10];
    RegQueryInfoKeyA(TestKey("Made\\Deep", HKEY_LOCAL_MACHINE), text, &size, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(text, "class");

    struct stat status;
    stat(machine.Path(File).c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    stat(machine.Path("registry").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
}

TEST_F(RegistryStorage, ComesBackWhenItsFolderIsDeletedUnderAProgram) {
    const TestKey key("key");
    key.Set("value", "value");
    for (const char *deleted : {"registry/registry.log", "registry/registry.lock", "registry"}) {
        std::filesystem::remove_all(machine.Path(deleted));
        EXPECT_EQ(key.Set("set", deleted), ERROR_SUCCESS) << deleted;
        SecondProcess peer("registry_peer"); // a fresh process reads what is stored now
        EXPECT_EQ(peer.Hear(), "ready");
        EXPECT_EQ(key.Get("value"), "value");
        peer.Kill();
        peer.Wait();
    }
    Reopen();
    EXPECT_EQ(TestKey("key").Get("value"), "value");
    EXPECT_EQ(TestKey("key").Get("set"), "registry");
    EXPECT_THAT(TestKey("shared").Values(), IsEmpty());
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
        HKEY read = nullptr;
        ASSERT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "key", &read), ERROR_SUCCESS);
        RegCloseKey(read);
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
    struct Change {
        std::function<void()> make;
        std::function<void()> expect_lost;
        std::size_t from = 0, to = 0;
    };
    std::vector<Change> changes = {
        {[&] { first.Set("changed", "new"); }, [] { EXPECT_EQ(TestKey("first").Get("changed"), "old"); }},
        {[&] { RegDeleteValueA(first, "doomed"); },
         [] { EXPECT_EQ(TestKey("first").Get("doomed"), "back"); }},
        {[&] { RegDeleteKeyA(HKEY_CURRENT_USER, "doomed"); },
         [] { EXPECT_EQ(TestKey("doomed").disposition, REG_OPENED_EXISTING_KEY); }},
        {[&] { TestKey("made"); },
         [] {
             EXPECT_EQ(TestKey("made").disposition, REG_CREATED_NEW_KEY);
             const TestKey rescued("Rescued Keys", HKEY_LOCAL_MACHINE);
             ASSERT_EQ(rescued.Subkeys().size(), 1u);
             const TestKey key(rescued.Subkeys()[0], rescued);
             EXPECT_EQ(key.Get("inside"), "inside") << "what was in the key is still to be had";
             EXPECT_EQ(TestKey("below", key).Get("deep"), "deep");
         }},
    };
    for (Change &change : changes) {
        change.from = Stored().size();
        change.make();
        change.to = Stored().size();
    }
    TestKey("made").Set("inside", "inside");
    TestKey("made\\below").Set("deep", "deep");
    first.Set("after", "after");
    const std::string whole = Stored();
    const std::string said = Said_During([&] {
        for (std::size_t row = 0; row < changes.size(); ++row) {
            for (std::size_t at = changes[row].from; at < changes[row].to; ++at) {
                SCOPED_TRACE(std::to_string(row) + ", " + std::to_string(at - changes[row].from));
                Store(Flipped(whole, at));
                changes[row].expect_lost();
                Store(Flipped(whole, at));
                EXPECT_EQ(TestKey("first").Get("changed"), row == 0 ? "old" : "new");
                EXPECT_EQ(TestKey("first").Get("doomed"), row == 1 ? "back" : Missing);
                EXPECT_EQ(TestKey("first").Get("after"), "after");
                EXPECT_EQ(TestKey("doomed").disposition,
                          row == 2 ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY);
                EXPECT_EQ(TestKey("made").Get("inside"), row == 3 ? Missing : "inside");
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
    std::vector<std::string> wrong = {"x", std::string(Header_Size, '\0'), "name = value\n" + whole,
                                      whole.substr(8)};
    for (std::size_t at = 0; at < Header_Size; ++at) {
        wrong.push_back(Flipped(whole, at));
        if (at > 0) wrong.push_back(whole.substr(0, at));
    }
    for (const std::string &bytes : wrong) {
        const std::string said = Said_During([&] {
            Store(bytes);
            HKEY key = nullptr;
            EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "key", &key), ERROR_BADDB);
            EXPECT_EQ(TestKey("key").error, ERROR_BADDB);
            EXPECT_EQ(RegSetValueExA(HKEY_CURRENT_USER, "value", 0, REG_NONE, nullptr, 0), ERROR_BADDB);
            EXPECT_EQ(RegFlushKey(HKEY_LOCAL_MACHINE), ERROR_BADDB);
            EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
        });
        EXPECT_EQ(Stored(), bytes);
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
    machine.Write(File, whole);
    EXPECT_EQ(TestKey("key").Get("value"), "value") << "put right, it is read again";
    Store("");
    EXPECT_EQ(TestKey("key").disposition, REG_CREATED_NEW_KEY) << "an empty file is a fresh one";

    for (const char *name : {"registry/registry.log", "registry/registry.lock", "registry"}) {
        std::filesystem::rename(machine.Path(name), machine.Path("elsewhere"));
        std::filesystem::create_symlink(machine.Path("elsewhere"), machine.Path(name));
        Reopen();
        EXPECT_EQ(RegSetValueExA(HKEY_CURRENT_USER, "value", 0, REG_NONE, nullptr, 0), ERROR_ACCESS_DENIED)
            << name;
        std::filesystem::remove(machine.Path(name));
        std::filesystem::rename(machine.Path("elsewhere"), machine.Path(name));
    }
}

// Sets values until the file may grow no more; then with room again.
SECOND_PROCESS(registry_on_a_full_disk) {
    std::signal(SIGXFSZ, SIG_IGN);
    const TestKey key("key");
    const rlimit limit = {std::stoul(process.Arguments().at(0)), RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    process.Tell(std::to_string(key.Set("value", std::string(100, 'n'))));
    process.Tell(key.Get("value"));
    process.Tell(std::to_string(TestKey("new").error));
    process.Tell(std::to_string(RegFlushKey(key)));
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
        SCOPED_TRACE(room);
        SecondProcess writer("registry_on_a_full_disk", {std::to_string(before.size() + room)});
        EXPECT_EQ(writer.Hear(), std::to_string(ERROR_DISK_FULL));
        EXPECT_EQ(writer.Hear(), "old");
        EXPECT_EQ(writer.Hear(), std::to_string(ERROR_DISK_FULL));
        EXPECT_EQ(writer.Hear(), "0");
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
    process.Tell(std::to_string(RegOpenKeyA(HKEY_CURRENT_USER, "key", &key)));
    DWORD size = 0;
    process.Tell(std::to_string(RegQueryValueExA(key, "value", nullptr, nullptr, nullptr, &size)));
    process.Tell(std::to_string(RegSetValueExA(key, "value", 0, REG_NONE, nullptr, 0)));
    process.Tell(std::to_string(RegDeleteKeyA(key, "")));
    process.Tell(std::to_string(TestKey("key").error) + " " + std::to_string(TestKey("other").error));
    process.Tell(std::to_string(RegFlushKey(key)));
    RegCloseKey(key);
    return 0;
}

TEST_F(RegistryStorage, IsReadWhereItCannotBeWritten) {
    TestKey("key").Set("value", "value");
    namespace fs = std::filesystem;
    const auto For_All = [&](uid_t owner, mode_t folder_mode, mode_t file_mode) {
        for (const auto &entry : fs::recursive_directory_iterator(machine.Folder())) {
            chmod(entry.path().c_str(), entry.is_directory() ? folder_mode : file_mode);
            if (geteuid() == 0) (void)!chown(entry.path().c_str(), owner, static_cast<gid_t>(-1));
        }
        chmod(machine.Folder().c_str(), folder_mode);
        if (geteuid() == 0) (void)!chown(machine.Folder().c_str(), owner, static_cast<gid_t>(-1));
    };
    for (const bool files_too : {false, true}) {
        SCOPED_TRACE(files_too);
        if (files_too) {
            fs::remove(machine.Path("names.lock"));
            fs::remove(machine.Path("registry/registry.lock"));
        }
        const std::string before = Stored();
        For_All(geteuid() == 0 ? 65534 : geteuid(), 0500, files_too ? 0400 : 0600);
        SecondProcess guest("registry_without_write_access");
        EXPECT_EQ(guest.Hear(), "0");
        EXPECT_EQ(guest.Hear(), "0");
        EXPECT_EQ(guest.Hear(), std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(guest.Hear(), std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(guest.Hear(), "0 " + std::to_string(ERROR_ACCESS_DENIED));
        EXPECT_EQ(guest.Hear(), "0");
        EXPECT_EQ(guest.Wait(), 0);
        For_All(geteuid(), 0700, 0600);
        EXPECT_EQ(Stored(), before);
    }
}

} // namespace
