#pragma once
// A binary file on disk, with two ways of writing that protect what somebody is working on: a temporary file
// that is gone when it is closed, and a file that takes its name only at Close and until then can be thrown
// away.
//
//     CKMFile file;
//     if (file.Open_With_Rollback(path) != 0) return;
//     if (file.Write(content, size, false) != 0) file.Rollback();
//     file.Close();                                      // 52 when somebody has made `path` meanwhile
//
// Every operation answers with a status and none throws. The operations that open close what the object has
// open before they do anything else, which commits a pending file; so does the destructor. What did not reach
// a full disk by the last Write or its flush is not reported: Close commits what is there.
//
// A save that is to replace a file renames that aside before Close, and deletes it after. Working names are
// tried, not reserved: two processes that save the same file in the same second can meet. A killed process
// leaves its working file, "path-number", behind.
//
// Paths are Windows paths (platform/files.h); null cannot be opened, nor a working name of more than 255
// characters, suffix included. A relative path counts from the current directory, at Close once more: after a
// change of it that answers 52 and the working file stays. One thread at a time. A copy of an object with an
// open file is one without; assigning to an object closes what it has open.

#include <kelmara/foundation/auto_deleteable_object.h>

#include <platform/errors.h>

#include <cstdio>

class KELMARA_API CKMFile : public CAutoDeleteableObject {
  public:
    // What the operations answer beside 0. A stream's own -1 comes from MoveTo alone.
    static constexpr int File_Not_Found = 2;  // could not be opened, for whatever reason
    static constexpr int Read_Error = 32;     // the stream has its error flag set
    static constexpr int Target_Exists = 52;  // or cannot be had in another way
    static constexpr int File_Invalid = 1006; // no file is open, it is not writable, unknown origin
    static constexpr int File_Corrupt = 1392; // not the whole block, and always for 0 bytes
    static constexpr int Out_Of_Memory = static_cast<int>(E_OUTOFMEMORY);

    CKMFile();
    CKMFile(const CKMFile &other);
    CKMFile &operator=(const CKMFile &other);
    ~CKMFile() override;

    /// `create` makes the file, or cuts it to nothing, before it is opened for reading or, with `write`, for
    /// both. Without it the file must be there. 0, or 2 and no file is open; a file that was cut stays cut.
    int Open(const char *path, bool write, bool create);

    /// A new file in the folder for temporary files, for reading and writing, deleted by Close (not by
    /// Rollback, but by the Close of whatever the object opens next). Its name is the tick count's: while
    /// that is taken it waits for the next tick, as long as that takes. 0 or 2.
    int Open_Temp_File();

    /// A working file beside `path`, "path-number", for reading and writing. Close gives it the name `path`,
    /// until then nothing happens to what is there. 0 or 2.
    int Open_With_Rollback(const char *path);

    /// For reading, and for writing at the end wherever the file stands; made if it is not there. 0 or 2.
    int Open_Append(const char *path);

    /// Writes the whole content to a file at `path`, made or cut to nothing; the position stays. An empty
    /// file gives 1392 and an empty copy, no memory (a file over 2 GB is never to be had) 0x8007000E and an
    /// empty copy, no open file 1006 and none; 1392 and none when what was written before did not reach the
    /// disk. A file may be duplicated onto itself as long as there is memory for it and the disk has room;
    /// its content is lost otherwise.
    int Duplicate(const char *path);

    /// Closes the file and deletes what Open_With_Rollback was writing. Any other file is closed and stays.
    /// 0, or 1006; whether it could be deleted is not told.
    int Rollback();

    /// 0, or 1006. 52 when a pending file cannot have its name because somebody has it: what was written is
    /// deleted, and what has the name stays as it is. A working file that somebody else has open is waited
    /// for, for a second or so, and counts as one that cannot have its name after that.
    int Close();

    /// `size` bytes, all or not at all: 0; 1006; 1392 for the end of the file and for a size of 0 or below;
    /// before these, 32 for a read that failed, now or earlier. What was read of a block that is cut short is
    /// in `buffer`.
    int Read(void *buffer, long size);

    /// 0, 1006 or 1392. `flush` hands everything to the host at once; whether that worked is not told.
    int Write(const void *buffer, long size, bool flush);

    /// In bytes; the position stays. 0 without a file, -1 for what a `long` cannot tell, and when what was
    /// written cannot reach the disk.
    int GetLength();

    /// `origin` 0 is the start, 1 the current position, 2 the end. 0; -1 and no move for a place before the
    /// start; 1006.
    int MoveTo(int position, int origin);

  private:
    friend struct KMFileLayout;

    KELMARA_INTERNAL void Close_If_Open();
    KELMARA_INTERNAL void Copy_Closed(const CKMFile &other);
    KELMARA_INTERNAL int Commit();
    KELMARA_INTERNAL void Close_Stream();
    KELMARA_INTERNAL void Delete_Work_File();
    KELMARA_INTERNAL int Forget_Work_Name();
    KELMARA_INTERNAL int Open_Work_File(bool &mode);
    KELMARA_INTERNAL int Read_Whole(void *block, long size, long position);

    FILE *m_Stream = nullptr;       // offset 4
    char m_WorkName[256] = {};      // offset 8, of the temporary or the working file
    char m_TargetName[256] = {};    // offset 264
    bool m_RollbackPending = false; // offset 520
    bool m_DeleteOnClose = false;   // offset 521
    bool m_Writable = false;        // offset 522
};
static_assert(sizeof(CKMFile) == 524);
