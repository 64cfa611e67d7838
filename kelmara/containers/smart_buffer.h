#pragma once
// A growable block of bytes with one cursor, like a file in memory: loaded, overwritten, searched, edited at
// the cursor, written back.
//
//     CSmartBuffer page;
//     if (page.Initialize(2048) != 0) return;
//     page.Write("<p>%name%</p>");
//     page.Search_And_Replace("%name%", name, true);
//     page.Flush_To_File(&file);
//
// The block comes from the memory services and belongs to the buffer; one that gets too small is doubled
// until it is large enough, and one of no bytes becomes as large as is asked. The data end at End_Of_Data and
// have no terminator; the cursor may stand anywhere in the block, also behind them. Before Initialize, and
// after one that failed, there is no block: what would write is refused with 0x8007000E, and nothing is read,
// and found only an empty text. What would make a block larger than a `long` can count is refused in the same
// way: one of 1 GB does not double.
//
// What is written may lie in the buffer's own block. A size below 0 counts as 0, and null as no data. One
// thread at a time. A copy shares the block: of the two only one may be changed or destroyed, and what the
// target of an assignment had is not released.

#include <kelmara/foundation/auto_deleteable_object.h>

#include <cstring>

class CKMFile;

class KELMARA_API CSmartBuffer : public CAutoDeleteableObject {
  public:
    CSmartBuffer();
    CSmartBuffer(const CSmartBuffer &other);
    CSmartBuffer &operator=(const CSmartBuffer &other);
    ~CSmartBuffer() override;

    /// Drops what the buffer has and makes a block of `size` zero bytes without data. 0, or 0x8007000E and no
    /// block, also for a size below 0.
    long Initialize(long size);

    /// Initialize with the file's length, and that many bytes from the file's current position; the cursor
    /// and End_Of_Data are then behind them. Where the file has fewer, zeroes follow. 0; 0x8007000E; 1006 for
    /// null, and the buffer stays. How the reading went is not told.
    long Initialize_From_File(CKMFile *file);

    /// 0, or -1 and the cursor stays: an offset below 0, or beyond the block (not the data).
    long Move_To(long offset);

    /// To the first place from the start or the cursor on where `text` stands, bytes that are 0 in the data
    /// being like any others. 0, or -1 and the cursor stays. An empty text stands wherever there are data,
    /// and at their end.
    long Move_To(const char *text, bool from_start);

    /// Takes `size` bytes out at the cursor, which stays; no more than there are up to End_Of_Data. 0.
    long Delete(long size);

    /// Puts bytes in at the cursor, moves what follows, and leaves the cursor behind them. With the cursor
    /// behind the data it writes. 0, or 0x8007000E and nothing has changed. Bytes of the own block are copied
    /// to a block of their own first.
    long Insert(const void *data, long size);
    long Insert(CSmartBuffer *other);

    /// Overwrites from the cursor on, and leaves the cursor behind; End_Of_Data follows when it is passed. 0,
    /// or 0x8007000E and nothing has changed. Texts are written without their terminator.
    long Write(const void *data, long size);
    long Write(CSmartBuffer *other);
    long Write(const char *text);
    long Write(const unsigned short *text);

    /// Copies `size` bytes from the cursor on, also from behind the data, and moves the cursor behind them if
    /// `advance`. 0, or -1 with nothing copied: a size below 0, null, or more than the block has.
    long Read(void *target, long size, bool advance);

    /// Replaces the first `find` of the data, or each, going on behind the replacement. The cursor is then
    /// behind the last replacement, or at the start when there was none. Always 0. The data are moved once or
    /// twice, however much there is to replace. An empty `find` stands once, at the start; null finds
    /// nothing. Where memory for growth runs out, each `find` whose replacement does not fit into the block
    /// goes all the same; where there is none to copy a `find` or `replacement` that lies in the own block,
    /// nothing is replaced.
    long Search_And_Replace(const char *find, const char *replacement, bool replace_all);

    /// Writes all data to the file, what the file answers; 1006 for null. The cursor stays. For no data that
    /// is the file's answer to 0 bytes, 1392.
    long Flush_To_File(CKMFile *file);

    long Get_Current_Offset();
    long Get_End_Of_Data();
    /// At the end of the block, not of the data.
    bool At_End();

    /// The block; null when there is none. Valid until the buffer grows.
    operator char *() const;
    operator unsigned short *() const;

  protected:
    /// Makes room for `extra` bytes behind the cursor: 0, or 0x8007000E and nothing has changed.
    long Check_Size_Requirements(int extra);

    char *Buffer = nullptr;        // offset 4, owned
    long Capacity = 0;             // offset 8, bytes of the block
    long Offset = 0;               // offset 12, the cursor
    long End_Of_Data = 0;          // offset 16
    char *Write_Pointer = nullptr; // offset 20, Buffer and Offset

  private:
    friend struct SmartBufferLayout;
    struct KELMARA_INTERNAL Replacing;

    KELMARA_INTERNAL long Grow_To(long long size);
    long Write_Otherwise(const void *data, long size);
    KELMARA_INTERNAL void Place_Cursor(long offset);
    KELMARA_INTERNAL bool Is_Own(const void *data) const;
    KELMARA_INTERNAL void Drop();
};
static_assert(sizeof(CSmartBuffer) == 24);

// The usual case is compiled into the caller: there is room, and the bytes are copied.
KELMARA_INLINE long CSmartBuffer::Write(const void *data, long size) {
    const unsigned long room = static_cast<unsigned long>(Capacity - Offset);
    if (!data || static_cast<unsigned long>(size) - 1 >= room) [[unlikely]]
        return Write_Otherwise(data, size);
    if (size == 1)
        *Write_Pointer = *static_cast<const char *>(data);
    else
        std::memmove(Write_Pointer, data, static_cast<std::size_t>(size));
    Offset += size;
    Write_Pointer += size;
    if (Offset > End_Of_Data) End_Of_Data = Offset;
    return 0;
}
