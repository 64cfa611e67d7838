#include <tests/faults/operations/operation.h>

#include <kelmara/containers/smart_buffer.h>
#include <kelmara/system/directories.h>
#include <kelmara/system/file.h>
#include <kelmara/system/os_helpers.h>

#include <platform/files.h>
#include <platform/kernel.h>

namespace {

std::string Content_Of(const char *path) {
    CKMFile file;
    if (file.Open(path, false, false) != 0) return "none";
    std::string content(static_cast<std::size_t>(file.GetLength()), ' ');
    file.Read(content.data(), file.GetLength());
    return content;
}

void Put(const char *path, const char *text) {
    CKMFile file;
    file.Open(path, true, true);
    file.Write(text, static_cast<long>(std::char_traits<char>::length(text)), false);
}

struct Target {
    Target() { Put("c:\\target", "before"); }
    ~Target() {
        file.Rollback();
        DeleteFileA("c:\\target");
        DeleteFileA("c:\\copy");
    }
    CKMFile file;
};

std::string Target_State(Target &) {
    return Content_Of("c:\\target") + "|" + Content_Of("c:\\copy");
}

/// With something written that has no name yet.
struct Pending : Target {
    Pending() {
        file.Open_With_Rollback("c:\\copy");
        file.Write("new", 3, true);
    }
};

struct Reading : Target {
    Reading() { file.Open("c:\\target", false, false); }
};

struct Buffer : Reading {
    CSmartBuffer buffer;
};

struct Folder {
    ~Folder() { RemoveDirectoryA("c:\\a\\b"), RemoveDirectoryA("c:\\a"); }
};

std::string Folder_State(Folder &) {
    return std::to_string(GetFileAttributesA("c:\\a\\b")) + std::to_string(GetFileAttributesA("c:\\a"));
}

template <class Subject = Target, class Operate>
Operation On_File(const char *name, std::vector<Outcome> stated, Operate operate,
                  Leaves leaves = Leaves::Before) {
    return Row(
        name, 0, stated, [] { return std::make_shared<Subject>(); }, operate,
        [](Subject &of) { return Target_State(of); }, leaves);
}

} // namespace

Operations File_Operations() {
    const auto folder = [] { return std::make_shared<Folder>(); };
    return {
        On_File("Open", {Gives(2)}, [](Target &of) { return of.file.Open("c:\\target", false, false); }),
        On_File("Open to write", {Gives(2)},
                [](Target &of) { return of.file.Open("c:\\target", true, false); }),
        // "or 2 and no file is open; a file that was cut stays cut"
        On_File(
            "Open anew", {Gives(2)}, [](Target &of) { return of.file.Open("c:\\copy", true, true); },
            Leaves::Partly),
        On_File("Open_Append", {Gives(2)}, [](Target &of) { return of.file.Open_Append("c:\\target"); }),
        On_File("Open_With_Rollback", {Gives(2)},
                [](Target &of) { return of.file.Open_With_Rollback("c:\\target"); }),
        On_File("Open_Temp_File", {Gives(2)}, [](Target &of) { return of.file.Open_Temp_File(); }),
        // "52 when a pending file cannot have its name ...: what was written is deleted"
        On_File<Pending>(
            "Close", {Gives(52)}, [](Pending &of) { return of.file.Close(); }, Leaves::Partly),
        On_File<Pending>("Rollback", {}, [](Pending &of) { return of.file.Rollback(); }),
        On_File<Reading>(
            "Duplicate", {Gives_No_Memory, Gives(2)},
            [](Reading &of) { return of.file.Duplicate("c:\\copy"); },
            Leaves::Partly), // "and an empty copy"
        Row(
            "Initialize_From_File", 0, {Gives_No_Memory}, [] { return std::make_shared<Buffer>(); },
            [](Buffer &of) { return of.buffer.Initialize_From_File(&of.file); },
            [](Buffer &of) { return std::to_string(of.buffer.Get_End_Of_Data()); }, Leaves::Partly),
        // "Nothing tells whether it worked"
        Row(
            "DirCreate", 0, {}, folder, [](Folder &) { return DirCreate("c:\\a\\b"), 0; }, Folder_State,
            Leaves::Partly),
        Row(
            "DirDestroyAll", 0, {Gives(-1)}, [=] { return DirCreate("c:\\a\\b"), folder(); },
            [](Folder &) { return DirDestroyAll("c:\\a"); }, Folder_State, Leaves::Partly),
        Row(
            "RunProcess", 0, {Gives(2)}, folder,
            [](Folder &) {
                char line[] = "z:\\bin\\true";
                return RunProcess(line);
            },
            [](Folder &) { return ""; }),
        // "a library that could not be loaded is not tried again until another has been asked for"
        Row(
            "Load_Call", 1, {Gives_Nothing}, [] { return std::make_shared<CWeakAPICall>(); },
            [](CWeakAPICall &call) { return call.Load_Call("kernel32.dll", "Sleep") != nullptr; },
            [](CWeakAPICall &) { return ""; }, Leaves::Partly),
    };
}
