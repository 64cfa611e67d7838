#include <tests/faults/save_paths.h>

#include <kelmara/containers/smart_buffer.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/localization/string_table.h>
#include <kelmara/system/file.h>
#include <kelmara/system/reg_master.h>
#include <platform/files.h>
#include <platform/machine.h>
#include <platform/machine_contents.h>
#include <platform/runtime.h>
#include <tests/support/registry_verbs.h>

#include <cstring>

namespace {

constexpr char Backup[] = "c:\\backup";

// --- the registry -----------------------------------------------------------------------------------------

constexpr char Key_Path[] = "Faults\\Saved";

bool Set_And_Flush(const char *text) {
    const TestKey key(Key_Path);
    return key.error == 0 && key.Set("value", {text, 4}) == 0 && RegFlushKey(key) == 0;
}

void Prepare_Registry() {
    TestKey(Key_Path).Set("kept", "kept");
    Set_And_Flush("old");
}

std::string Look_In_Registry() {
    const TestKey key(Key_Path);
    const std::string kept = key.Get("kept");
    return kept == "kept" ? key.Get("value").c_str() : "lost: " + kept;
}

constexpr DWORD Rewritten_From = 1 << 20, Step = 50000; // bytes

// Nearly nothing of it lives, and with one more step it is rewritten.
void Prepare_Compaction() {
    Prepare_Registry();
    const TestKey key(Key_Path);
    MachineRegistry registry = {};
    while (Look_At_Registry(&registry) == ERROR_SUCCESS && registry.file_size + Step < Rewritten_From)
        key.Set("large", std::string(Step / 2, 'x'));
}

bool Set_And_Compact() {
    const TestKey key(Key_Path);
    return key.Set("large", std::string(Step, 'z')) == 0 && Set_And_Flush("new");
}

// --- files ------------------------------------------------------------------------------------------------

/// Writes by `write`, which gives the size, and gives it the target's name once it is whole. What is at the
/// target stays under another name until then.
template <class Write>
bool Replace_Target(Write write) {
    CKMFile file;
    if (file.Open_With_Rollback(Target) != 0) return false;
    const long size = write(file);
    if (size < 0 || file.GetLength() != size) return file.Rollback(), false;
    if (GetFileAttributesA(Target) != INVALID_FILE_ATTRIBUTES) {
        Machine_Remove(Backup);
        if (Machine_Rename(Target, Backup) != 0) return file.Rollback(), false;
    }
    if (file.Close() != 0) return Machine_Rename(Backup, Target), false;
    Machine_Remove(Backup);
    return true;
}

const std::string New_Content(20000, 'n');

bool Save_File() {
    return Replace_Target([](CKMFile &file) {
        const long size = static_cast<long>(New_Content.size());
        return file.Write(New_Content.data(), size, true) == 0 ? size : -1;
    });
}

// --- string tables ----------------------------------------------------------------------------------------

void Fill_Table(CStringTable &table) {
    table.New_Table();
    for (int i = 0; i < 40; ++i) table.Set_String(i, "a string of the table");
}

long Write_Changed(CStringTable &table, CKMFile &file) {
    if (table.Set_String(3, "another string") < 0 || table.Save_Changes(&file) != 0) return -1;
    return 20 + 40 * (208 + 21) - 7; // the 208th byte of an entry is behind the last one
}

void Prepare_Table() {
    for (const char *path : {Target, Former, Expected}) {
        CStringTable table(true);
        CKMFile file;
        Fill_Table(table);
        file.Open(path, true, true);
        if (path == Expected)
            Write_Changed(table, file);
        else
            table.Save_Changes(&file);
    }
}

/// The target, or its backup where a killed save has left it.
int Open_Saved(CKMFile &file) {
    return file.Open(Target, false, false) == 0 ? 0 : file.Open(Backup, false, false);
}

/// Behind the file's end, after reads that all went well: how a load went is to be asked of the file.
bool Read_Whole(CKMFile &file) {
    char byte;
    return file.Read(&byte, 1) == CKMFile::File_Corrupt;
}

bool Save_Table() {
    CStringTable table(true);
    CKMFile old;
    if (Open_Saved(old) != 0 || table.Load_Table(&old) != 0 || !Read_Whole(old)) return false;
    old.Close();
    return Replace_Target([&](CKMFile &file) { return Write_Changed(table, file); });
}

// --- section files ----------------------------------------------------------------------------------------

std::string Sections_Of(const char *number) {
    std::string text;
    for (int i = 0; i < 300; ++i) text += "[section]\r\nnumber=" + std::string(number) + "\r\n";
    return text;
}

bool Save_Sections() {
    CSmartBuffer text;
    CKMFile old;
    if (Open_Saved(old) != 0 || text.Initialize_From_File(&old) != 0) return false;
    if (!Read_Whole(old)) return false;
    old.Close();
    text.Search_And_Replace("=1\r", "=22\r", true);
    return Replace_Target(
        [&](CKMFile &file) { return text.Flush_To_File(&file) == 0 ? text.Get_End_Of_Data() : -1; });
}

} // namespace

std::string Content_Of(const char *path) {
    CKMFile file;
    if (file.Open(path, false, false) != 0) return "none";
    std::string content(static_cast<std::size_t>(file.GetLength()), ' ');
    file.Read(content.data(), static_cast<long>(content.size()));
    return content;
}

bool Put(const char *path, const std::string &content) {
    CKMFile file;
    return file.Open(path, true, true) == 0 &&
           file.Write(content.data(), static_cast<long>(content.size()), true) == 0;
}

// Expected is what a save makes where nothing goes wrong; the first child's own work.
std::string Look_At_Target() {
    const std::string expected = Content_Of(Expected), target = Content_Of(Target);
    if (target == expected) return "new";
    if (target == Content_Of(Former)) return "old";
    if (target == "none" && Content_Of(Backup) == Content_Of(Former)) return "old aside";
    return target == "none" ? target : "damaged: " + std::to_string(target.size());
}

void Begin_With(const std::string &content, const std::string &expected) {
    Put(Target, content);
    Put(Former, content);
    Put(Expected, expected);
}

std::vector<SavePath> Library_Save_Paths() {
    return {
        {"registry", "old", Prepare_Registry, [] { return Set_And_Flush("new"); }, Look_In_Registry,
         SaveWay::Appended},
        {"registry rewritten", "old", Prepare_Compaction, Set_And_Compact, Look_In_Registry},
        {"file", "old", [] { Begin_With("old content", New_Content); }, Save_File, Look_At_Target},
        {"file that was not there", "none", [] { Put(Expected, New_Content), Put(Former, "x"); }, Save_File,
         Look_At_Target},
        {"string table", "old", Prepare_Table, Save_Table, Look_At_Target},
        {"section file", "old", [] { Begin_With(Sections_Of("1"), Sections_Of("22")); }, Save_Sections,
         Look_At_Target},
    };
}
