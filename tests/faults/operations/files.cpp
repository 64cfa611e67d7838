#include <tests/faults/operations/operation.h>
#include <tests/faults/save_paths.h>

#include <kelmara/containers/smart_buffer.h>
#include <kelmara/system/directories.h>
#include <kelmara/system/file.h>
#include <kelmara/system/os_helpers.h>

#include <platform/files.h>
#include <platform/kernel.h>

namespace {

std::string Working_File() {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA("c:\\*-*", &found);
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    return found.cFileName;
}

struct Saved {
    Saved() { Put(Target, "before"); }
    ~Saved() {
        file.Rollback();
        DeleteFileA(("c:\\" + Working_File()).c_str());
        DeleteFileA(Target);
        DeleteFileA("c:\\copy");
    }
    std::string State() const {
        return "target=" + Content_Of(Target) + "|copy=" + Content_Of("c:\\copy") +
               (Working_File().empty() ? "|" : "|working=1|");
    }
    CKMFile file;
};

/// With something written that has no name yet.
struct Pending : Saved {
    Pending() {
        file.Open_With_Rollback("c:\\copy");
        file.Write("new", 3, true);
    }
};

struct Reading : Saved {
    Reading() { file.Open(Target, false, false); }
};

struct Buffer : Reading {
    std::string State() { return std::to_string(buffer.Get_End_Of_Data()); }
    CSmartBuffer buffer;
};

struct Flushed : Pending {
    Flushed() { buffer.Initialize(8), buffer.Write("abc"); }
    CSmartBuffer buffer;
};

struct Folder {
    ~Folder() { RemoveDirectoryA("c:\\a\\b"), RemoveDirectoryA("c:\\a"); }
    std::string State() const {
        return std::to_string(GetFileAttributesA("c:\\a\\b")) + "|" +
               std::to_string(GetFileAttributesA("c:\\a"));
    }
};

/// Back where it came from, whether or not the operation got there.
struct Filled : Folder {
    Filled() { DirCreate("c:\\a\\b"); }
    std::string State() const { return SetCurrentDirectoryA("c:\\"), Folder::State(); }
};

struct Machine {
    char line[20] = "z:\\bin\\true", path[270] = "";
    CWeakAPICall call;
};

} // namespace

Operations File_Operations() {
    return {
        Row<Saved>("Open", 0, {Gives(2)}, [](auto &of) { return of.file.Open(Target, false, false); }),
        Row<Saved>("Open to write", 0, {Gives(2)},
                   [](auto &of) { return of.file.Open(Target, true, false); }),
        // "or 2 and no file is open; a file that was cut stays cut"
        Row<Saved>("Open anew", 0, {Gives(2)}, Partly,
                   [](auto &of) { return of.file.Open("c:\\copy", true, true); }),
        Row<Saved>("Open_Append", 0, {Gives(2)}, [](auto &of) { return of.file.Open_Append(Target); }),
        Row<Saved>("Open_With_Rollback", 0, {Gives(2)},
                   [](auto &of) { return of.file.Open_With_Rollback(Target); }),
        Row<Saved>("Open_Temp_File", 0, {Gives(2)}, [](auto &of) { return of.file.Open_Temp_File(); }),
        // "52 when a pending file cannot have its name ...: what was written is deleted"
        Row<Pending>("Close", 0, {Gives(52)}, Once(Partly), [](auto &of) { return of.file.Close(); }),
        // "whether it could be deleted is not told"
        Row<Pending>("Rollback", 0, {}, Once(Either), [](auto &of) { return of.file.Rollback(); }),
        Row<Flushed>("Flush_To_File", 0, {}, [](auto &of) { return of.buffer.Flush_To_File(&of.file); }),
        // "and an empty copy"
        Row<Reading>("Duplicate", 0, {No_Memory, Gives(2)}, Or(Before, {"copy="}),
                     [](auto &of) { return of.file.Duplicate("c:\\copy"); }),
        Row<Buffer>("Initialize_From_File", 0, {No_Memory},
                    [](auto &of) { return of.file.MoveTo(0, 0), of.buffer.Initialize_From_File(&of.file); }),
        // "Nothing tells whether it worked"
        Row<Folder>("DirCreate", 0, {}, Partly_Untold, [](auto &) { DirCreate("c:\\a\\b"); }),
        Row<Filled>("DirDestroyAll", 0, {Gives(-1)}, Partly, [](auto &) { return DirDestroyAll("c:\\a"); }),
        // "A directory that cannot be listed counts as empty"
        Row<Filled>("ClearDir", 0, {Gives(-1)}, Partly_Untold, [](auto &) { return ClearDir("c:\\a"); }),
        // "A directory that the machine cannot tell is an empty text, with 0"
        Row<Machine>("Get_Path_From_Directory_ID", 0, {},
                     [](auto &of) { return Get_Path_From_Directory_ID(17, of.path); }),
        Row<Machine>("Check_Free_Disk_Space", 1, {Nothing}, [](auto &) { return Check_Free_Disk_Space(1); }),
        Row<Machine>("Find_CDROM", 0, {}, [](auto &of) { Find_CDROM(of.path); }),
        Row<Machine>("RunningAsAdministrator", 1, {Nothing}, [](auto &) { return RunningAsAdministrator(); }),
        Row<Machine>("CheckOsVersion", 0, {},
                     [](auto &) {
                         unsigned long flags = 0;
                         CheckOsVersion(flags);
                     }),
        Row<Machine>("RunProcess", 0, {Gives(2)}, [](auto &of) { return RunProcess(of.line); }),
        // "a library that could not be loaded is not tried again until another has been asked for"
        Row<Machine>("Load_Call", 1, {Nothing}, Once(Before),
                     [](auto &of) { return of.call.Load_Call("kernel32.dll", "Sleep") != nullptr; }),
    };
}
