// The registry and a string table beside SQLite, where its source is at hand (sqlite.sh): values and texts
// under a name in a file, which other processes see; a set that is on the disk, and one that need not be.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>

#include <platform/registry.h>

#include <build/sqlite/sqlite3.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int Values = 10000, Strings = 5000, Flushed_Calls = 301;
constexpr DWORD Data_Size = 100;

/// Other bytes each time: the peer writes nothing where they are as they were.
const BYTE *New_Data() {
    static BYTE data[Data_Size];
    static unsigned number = 0;
    std::memcpy(data, &++number, sizeof number);
    return data;
}

void Must(bool done) {
    if (!done) std::abort();
}

class Database {
  public:
    explicit Database(const std::string &name) {
        Must(sqlite3_open_v2(name.c_str(), &base_,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI |
                                 SQLITE_OPEN_NOMUTEX,
                             nullptr) == SQLITE_OK);
    }
    ~Database() { sqlite3_close_v2(base_); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    void Do(const char *command) {
        Must(sqlite3_exec(base_, command, nullptr, nullptr, nullptr) == SQLITE_OK);
    }
    sqlite3_stmt *Prepared(const char *command) {
        sqlite3_stmt *statement = nullptr;
        Must(sqlite3_prepare_v3(base_, command, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) ==
             SQLITE_OK);
        return statement;
    }

  private:
    sqlite3 *base_ = nullptr;
};

void Get(sqlite3_stmt *get, const char *name, void *copy, std::size_t room) {
    sqlite3_bind_text(get, 1, name, -1, SQLITE_STATIC);
    Must(sqlite3_step(get) == SQLITE_ROW);
    std::memcpy(copy, sqlite3_column_blob(get, 0),
                std::min(room, static_cast<std::size_t>(sqlite3_column_bytes(get, 0))));
    sqlite3_reset(get);
}

void Put(sqlite3_stmt *put, const char *name, const void *bytes, int size) {
    sqlite3_bind_text(put, 1, name, -1, SQLITE_STATIC);
    sqlite3_bind_blob(put, 2, bytes, size, SQLITE_STATIC);
    Must(sqlite3_step(put) == SQLITE_DONE);
    sqlite3_reset(put);
}

/// Names in an order that is not theirs.
class Names {
  public:
    Names(const char *prefix, int count) : prefix_(prefix), count_(count) {}
    const char *Next() {
        std::snprintf(name_, sizeof name_, "%s%d", prefix_, at_ = (at_ + 7919) % count_);
        return name_;
    }

  private:
    const char *prefix_;
    int count_, at_ = 0;
    char name_[40];
};

constexpr char Make_Table[] = "create table v (name text primary key, bytes blob) without rowid; begin";
constexpr char Put_Command[] = "insert or replace into v values (?, ?)";
constexpr char Get_Command[] = "select bytes from v where name = ?";

void Measure_Registry(const std::string &folder) {
    HKEY key = nullptr;
    Must(RegCreateKeyExA(HKEY_CURRENT_USER, "n", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) == 0);
    Database base(folder + "/values.sqlite");
    base.Do("pragma journal_mode = wal; pragma synchronous = off");
    base.Do(Make_Table);
    sqlite3_stmt *const put = base.Prepared(Put_Command), *const get = base.Prepared(Get_Command);
    const auto set = [key](const char *name) {
        Must(RegSetValueExA(key, name, 0, REG_BINARY, New_Data(), Data_Size) == 0);
    };
    Names fill("value ", Values), ours("value ", Values), peers("value ", Values);
    for (int i = 0; i < Values; ++i) {
        const char *const name = fill.Next();
        set(name);
        Put(put, name, New_Data(), Data_Size);
    }
    base.Do("commit");
    BYTE copy[Data_Size];
    measure::Heading("registry", "SQLite");
    measure::Compare(
        "read one of 10,000 values",
        MEASURED {
            DWORD size = sizeof copy;
            RegQueryValueExA(key, ours.Next(), nullptr, nullptr, copy, &size);
            measure::Keep(copy);
        },
        MEASURED {
            Get(get, peers.Next(), copy, sizeof copy);
            measure::Keep(copy);
        },
        1.0);
    measure::Compare_Calls(
        "set one of 10,000 values", [&] { set(ours.Next()); },
        [&] { Put(put, peers.Next(), New_Data(), Data_Size); }, 1.0);
    base.Do("pragma synchronous = full");
    measure::Compare_Calls(
        "set one and flush it",
        [&] {
            set(ours.Next());
            Must(RegFlushKey(key) == 0);
        },
        [&] { Put(put, peers.Next(), New_Data(), Data_Size); }, 1.0, Flushed_Calls);
    for (sqlite3_stmt *const each : {put, get}) sqlite3_finalize(each);
    RegCloseKey(key);
}

std::string Text_Of(int number) {
    return "a string of some words, the " + std::to_string(number) + "th of its table";
}

void Make_Catalogues(const std::string &base_name) {
    Database base(base_name);
    base.Do(Make_Table);
    sqlite3_stmt *const put = base.Prepared(Put_Command);
    CStringTable table(true);
    CKMFile file;
    Must(table.New_Table() == 0 && file.Open("c:\\texts.ltx", true, true) == 0);
    for (int number = 0; number < Strings; ++number) {
        const std::string name = "KMSTR_" + std::to_string(number), text = Text_Of(number);
        Put(put, name.c_str(), text.data(), static_cast<int>(text.size()));
        Must(table.Import_String((text + "\t" + name + "\t0\t ").c_str()) >= 0);
    }
    Must(table.Save_Changes(&file) == 0);
    sqlite3_finalize(put);
    base.Do("commit");
}

void Load(CStringTable &table) {
    CKMFile file;
    Must(file.Open("c:\\texts.ltx", false, false) == 0 && table.Load_Table(&file) == 0);
}

void Measure_String_Table(const std::string &folder) {
    const std::string path = folder + "/texts.sqlite", read_only = "file:" + path + "?immutable=1";
    Make_Catalogues(path);
    Names ours("KMSTR_", Strings), peers("KMSTR_", Strings);
    CSafeStr text;
    char copy[512];
    measure::Heading("string table", "SQLite");
    measure::Compare(
        "open 5,000 strings and find one",
        [&] {
            CStringTable table;
            Load(table);
            table.Get_String_From_Identifier("KMSTR_2500", text);
            measure::Keep(text);
        },
        [&] {
            Database base(read_only);
            sqlite3_stmt *const get = base.Prepared(Get_Command);
            Get(get, "KMSTR_2500", copy, sizeof copy);
            sqlite3_finalize(get);
        },
        2.0);
    CStringTable table;
    Load(table);
    for (int lookup = 0; lookup < 1000; ++lookup) table.Get_String_From_Identifier(ours.Next(), text);
    Database base(read_only);
    sqlite3_stmt *const get = base.Prepared(Get_Command);
    base.Do("begin");
    measure::Compare(
        "find any string and copy it",
        MEASURED {
            table.Get_String_From_Identifier(ours.Next(), text);
            measure::Keep(text);
        },
        MEASURED {
            Get(get, peers.Next(), copy, sizeof copy);
            measure::Keep(copy);
        },
        1.0);
    sqlite3_finalize(get);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    Measure_Registry(machine.Folder());
    Measure_String_Table(machine.Folder());
    return 0;
}
