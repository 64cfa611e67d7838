#include <kelmara/foundation/auto_deleteable_object.h>

#undef KELMARA_INLINE
#define KELMARA_INLINE
#include <kelmara/containers/smart_buffer.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/system/file.h>

#include <platform/errors.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <emmintrin.h>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct SmartBufferLayout {
    static_assert(offsetof(CSmartBuffer, Buffer) == 4 && offsetof(CSmartBuffer, Capacity) == 8);
    static_assert(offsetof(CSmartBuffer, Offset) == 12 && offsetof(CSmartBuffer, End_Of_Data) == 16);
    static_assert(offsetof(CSmartBuffer, Write_Pointer) == 20);
};
#pragma GCC diagnostic pop

namespace {

constexpr long Not_Found = -1;

struct Text {
    const char *bytes;
    long length;
};

Text Text_Of(const char *text) {
    return {text, static_cast<long>(std::strlen(text))};
}

void Move_Bytes(char *to, const void *from, long size) {
    if (size > 0) std::memmove(to, from, static_cast<std::size_t>(size));
}

bool Stands_At(const char *place, const Text &text) {
    return std::memcmp(place, text.bytes, static_cast<std::size_t>(text.length)) == 0;
}

// Of the 16 places from `place` on, those whose first and last byte are the text's: one bit each. Both tell
// more than the first alone where that is a common one.
unsigned Candidates(const char *place, const Text &text) {
    const auto bytes_at = [](const char *from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    };
    const __m128i first = _mm_cmpeq_epi8(bytes_at(place), _mm_set1_epi8(text.bytes[0]));
    const __m128i last =
        _mm_cmpeq_epi8(bytes_at(place + text.length - 1), _mm_set1_epi8(text.bytes[text.length - 1]));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(first, last)));
}

// Null when `text` does not stand anywhere in the bytes up to `end`.
const char *Find(const char *from, const char *end, const Text &text) {
    if (end - from < text.length) return nullptr;
    if (text.length == 0) return from;
    const char *const last = end - text.length;
    for (; last - from >= 15; from += 16) {
        for (unsigned found = Candidates(from, text); found; found &= found - 1) {
            const char *const place = from + __builtin_ctz(found);
            if (Stands_At(place, text)) return place;
        }
    }
    for (; from <= last; ++from) {
        if (*from == *text.bytes && Stands_At(from, text)) return from;
    }
    return nullptr;
}

long Count(const char *from, const char *end, const Text &text, bool all) {
    long count = 0;
    while ((from = Find(from, end, text)) != nullptr) {
        ++count;
        from += text.length;
        if (!all) break;
    }
    return count;
}

// Bytes that are about to be moved, kept in a block of their own; null when there is no memory.
class KeptBytes {
  public:
    KeptBytes(const void *bytes, long size) : m_Block(static_cast<char *>(ds_malloc(size))) {
        if (m_Block) Move_Bytes(m_Block, bytes, size);
    }
    ~KeptBytes() {
        if (m_Block) ds_free(m_Block);
    }
    KeptBytes(const KeptBytes &) = delete;
    KeptBytes &operator=(const KeptBytes &) = delete;
    const char *Get() const { return m_Block; }

  private:
    char *m_Block;
};

} // namespace

CSmartBuffer::CSmartBuffer() = default;

CSmartBuffer::CSmartBuffer(const CSmartBuffer &other) = default;

CSmartBuffer &CSmartBuffer::operator=(const CSmartBuffer &other) = default;

CSmartBuffer::~CSmartBuffer() {
    Drop();
}

void CSmartBuffer::Drop() {
    if (Buffer) ds_free(Buffer);
    Buffer = Write_Pointer = nullptr;
    Capacity = Offset = End_Of_Data = 0;
}

void CSmartBuffer::Place_Cursor(long offset) {
    Offset = offset;
    Write_Pointer = Buffer + offset;
}

// A block of no bytes has one all the same, so that it is a block.
long CSmartBuffer::Initialize(long size) {
    Drop();
    if (size < 0) return E_OUTOFMEMORY;
    Buffer = static_cast<char *>(ds_malloc_clear(std::max(size, 1L)));
    if (!Buffer) return E_OUTOFMEMORY;
    Capacity = size;
    Place_Cursor(0);
    return 0;
}

long CSmartBuffer::Initialize_From_File(CKMFile *file) {
    if (!file) return ERROR_FILE_INVALID;
    const long length = file->GetLength();
    if (const long result = Initialize(length); result != 0) return result;
    file->Read(Buffer, length);
    End_Of_Data = length;
    Place_Cursor(length);
    return 0;
}

long CSmartBuffer::Grow_To(long long size) {
    if (size <= Capacity) return 0;
    if (!Buffer) return E_OUTOFMEMORY;
    long long capacity = Capacity > 0 ? Capacity : size;
    while (capacity < size) capacity *= 2;
    if (capacity > LONG_MAX) return E_OUTOFMEMORY;
    char *const grown = static_cast<char *>(ds_realloc(Buffer, static_cast<long>(capacity)));
    if (!grown) return E_OUTOFMEMORY;
    Buffer = grown;
    Capacity = static_cast<long>(capacity);
    Place_Cursor(Offset);
    return 0;
}

long CSmartBuffer::Check_Size_Requirements(int extra) {
    return Grow_To(static_cast<long long>(Offset) + extra);
}

bool CSmartBuffer::Is_Own(const void *data) const {
    const auto place = reinterpret_cast<std::uintptr_t>(data);
    const auto start = reinterpret_cast<std::uintptr_t>(Buffer);
    return Buffer && place >= start && place - start < static_cast<std::uintptr_t>(Capacity);
}

long CSmartBuffer::Write_Otherwise(const void *data, long size) {
    size = data ? std::max(size, 0L) : 0;
    const long own_place = Is_Own(data) ? static_cast<long>(static_cast<const char *>(data) - Buffer) : -1;
    if (const long result = Check_Size_Requirements(size); result != 0) return result;
    Move_Bytes(Write_Pointer, own_place >= 0 ? Buffer + own_place : data, size);
    Place_Cursor(Offset + size);
    End_Of_Data = std::max(End_Of_Data, Offset);
    return 0;
}

long CSmartBuffer::Write(CSmartBuffer *other) {
    return other ? Write(other->Buffer, other->End_Of_Data) : Write(nullptr, 0);
}

long CSmartBuffer::Write(const char *text) {
    return Write(text, text ? Text_Of(text).length : 0);
}

long CSmartBuffer::Write(const unsigned short *text) {
    long length = 0;
    while (text && text[length]) ++length;
    return Write(text, length * static_cast<long>(sizeof *text));
}

long CSmartBuffer::Insert(const void *data, long size) {
    if (!data || size <= 0 || Offset >= End_Of_Data) return Write(data, size);
    if (Is_Own(data)) {
        const KeptBytes kept(data, size);
        return kept.Get() ? Insert(kept.Get(), size) : E_OUTOFMEMORY;
    }
    if (const long result = Grow_To(static_cast<long long>(End_Of_Data) + size); result != 0) return result;
    Move_Bytes(Write_Pointer + size, Write_Pointer, End_Of_Data - Offset);
    End_Of_Data += size;
    return Write(data, size);
}

long CSmartBuffer::Insert(CSmartBuffer *other) {
    return other ? Insert(other->Buffer, other->End_Of_Data) : Insert(nullptr, 0);
}

long CSmartBuffer::Delete(long size) {
    size = std::min(size, End_Of_Data - Offset);
    if (size <= 0) return 0;
    Move_Bytes(Write_Pointer, Write_Pointer + size, End_Of_Data - Offset - size);
    End_Of_Data -= size;
    return 0;
}

long CSmartBuffer::Read(void *target, long size, bool advance) {
    if (size < 0 || size > Capacity - Offset || !target) return -1;
    Move_Bytes(static_cast<char *>(target), Write_Pointer, size);
    if (advance) Place_Cursor(Offset + size);
    return 0;
}

long CSmartBuffer::Move_To(long offset) {
    if (offset < 0 || offset > Capacity) return -1;
    Place_Cursor(offset);
    return 0;
}

long CSmartBuffer::Move_To(const char *text, bool from_start) {
    if (!text) return Not_Found;
    const char *const start = from_start ? Buffer : Write_Pointer;
    const char *const found = Find(start, Buffer + End_Of_Data, Text_Of(text));
    if (!found && (start || *text)) return Not_Found;
    Place_Cursor(static_cast<long>(found - Buffer));
    return 0;
}

// The bytes that are still to be looked through stand apart from those that are done, with room between them
// that is never less than what the growth so far has been.
struct KELMARA_INTERNAL CSmartBuffer::Replacing {
    CSmartBuffer &buffer;
    const Text find, replacement;
    long done;      // end of the bytes that are done
    long rest, end; // the bytes that are still to be looked through

    void Set_Apart(long new_end) {
        const long moved = new_end - end;
        Move_Bytes(buffer.Buffer + rest + moved, buffer.Buffer + rest, end - rest);
        rest += moved;
        end = new_end;
    }

    bool Find_Next(long &place) const {
        const char *const found = Find(buffer.Buffer + rest, buffer.Buffer + end, find);
        if (found) place = static_cast<long>(found - buffer.Buffer);
        return found != nullptr;
    }

    void Keep_Up_To(long place) {
        Move_Bytes(buffer.Buffer + done, buffer.Buffer + rest, place - rest);
        done += place - rest;
        rest = place;
    }

    bool Make_Room() {
        if (replacement.length <= rest - done) return true;
        if (buffer.Grow_To(static_cast<long long>(done) + replacement.length + (end - rest)) != 0)
            return false;
        Set_Apart(buffer.Capacity);
        return true;
    }

    void Replace_At(long place) {
        Keep_Up_To(place);
        rest += find.length;
        if (!Make_Room()) return;
        Move_Bytes(buffer.Buffer + done, replacement.bytes, replacement.length);
        done += replacement.length;
    }

    void Finish() {
        const long cursor = done;
        Keep_Up_To(end);
        buffer.End_Of_Data = done;
        buffer.Place_Cursor(cursor);
    }
};

// Bytes behind the data and behind the result are left alone, unless memory runs out: then the block's end is
// used to keep the rest apart.
long CSmartBuffer::Search_And_Replace(const char *find, const char *replacement, bool replace_all) {
    Place_Cursor(0);
    if (!find || !replacement || !Buffer) return 0;
    if (Is_Own(find) || Is_Own(replacement)) {
        const KeptBytes own_find(find, Text_Of(find).length + 1);
        const KeptBytes own_replacement(replacement, Text_Of(replacement).length + 1);
        if (!own_find.Get() || !own_replacement.Get()) return 0;
        return Search_And_Replace(own_find.Get(), own_replacement.Get(), replace_all);
    }

    Replacing work{*this, Text_Of(find), Text_Of(replacement), 0, 0, End_Of_Data};
    const bool all = replace_all && *find;
    const long longer = work.replacement.length - work.find.length;
    long place = 0;
    if (!work.Find_Next(place)) return 0;
    work.Keep_Up_To(place);
    if (longer > 0) {
        const long count = Count(Buffer + place, Buffer + End_Of_Data, work.find, all);
        const long long size = End_Of_Data + static_cast<long long>(count) * longer;
        work.Set_Apart(Grow_To(size) == 0 ? static_cast<long>(size) : Capacity);
    }
    while (work.Find_Next(place)) {
        work.Replace_At(place);
        if (!all) break;
    }
    work.Finish();
    return 0;
}

long CSmartBuffer::Flush_To_File(CKMFile *file) {
    return file ? file->Write(Buffer, End_Of_Data, false) : ERROR_FILE_INVALID;
}

long CSmartBuffer::Get_Current_Offset() {
    return Offset;
}

long CSmartBuffer::Get_End_Of_Data() {
    return End_Of_Data;
}

bool CSmartBuffer::At_End() {
    return Offset == Capacity;
}

CSmartBuffer::operator char *() const {
    return Buffer;
}

CSmartBuffer::operator unsigned short *() const {
    return reinterpret_cast<unsigned short *>(Buffer);
}
