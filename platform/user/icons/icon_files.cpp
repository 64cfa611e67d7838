// Icons from files: a directory of pictures, each a header, colours, and rows of colours and of the mask.

#include <platform/user/icons/icon.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/runtime.h>
#include <platform/user.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <tuple>

namespace {

constexpr std::size_t Largest_File = 1u << 24;
constexpr LONG Most_Pixels = 256; // of a side
constexpr UINT Failed = 0xFFFFFFFF;

struct Directory {
    WORD reserved, type, count;
};
struct DirectoryEntry {
    BYTE width, height, colours, reserved; // the picture's own header counts
    WORD planes, bits;
    DWORD size, offset;
};
static_assert(sizeof(Directory) == 6 && sizeof(DirectoryEntry) == 16);

/// A picture that is in its file whole.
struct FoundPicture {
    BITMAPINFOHEADER header;
    LONG height;
    std::string_view colours, rows, mask_rows;
};

class StreamOf {
  public:
    explicit StreamOf(LPCSTR path) : stream_(Machine_Open_Stream(path, "rb")) {}
    ~StreamOf() {
        if (stream_) Machine_Close_Stream(stream_);
    }
    StreamOf(const StreamOf &) = delete;
    StreamOf &operator=(const StreamOf &) = delete;
    FILE *Get() const { return stream_; }

  private:
    FILE *const stream_;
};

// False for a file that cannot be read.
bool Read_File(LPCSTR path, std::string &content) {
    const StreamOf stream(path);
    if (!stream.Get()) return false;
    char bytes[16384];
    while (const std::size_t got = std::fread(bytes, 1, sizeof bytes, stream.Get())) {
        content.append(bytes, got);
        if (content.size() <= Largest_File) continue;
        content.clear();
        return true;
    }
    return !std::ferror(stream.Get()) || Succeed_Or_Tell(ERROR_READ_FAULT);
}

/// Takes the next bytes of a text that may end before them.
class Cut {
  public:
    explicit Cut(std::string_view rest) : rest_(rest) {}
    bool Take(std::size_t size, std::string_view &part) {
        if (size > rest_.size()) return false;
        part = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return true;
    }
    template <class Record>
    bool Take(Record &record) {
        std::string_view part;
        if (!Take(sizeof record, part)) return false;
        std::memcpy(&record, part.data(), sizeof record);
        return true;
    }

  private:
    std::string_view rest_;
};

bool Is_Usable(const BITMAPINFOHEADER &header) {
    return header.biSize == sizeof header && header.biWidth > 0 && header.biWidth <= Most_Pixels &&
           header.biHeight > 0 && header.biHeight <= 2 * Most_Pixels && header.biHeight % 2 == 0 &&
           Is_Depth(header.biBitCount) && header.biCompression == BI_RGB;
}

std::size_t Colour_Count(const BITMAPINFOHEADER &header) {
    if (header.biBitCount > 8) return 0;
    const std::size_t all = std::size_t{1} << header.biBitCount;
    return header.biClrUsed == 0 ? all : std::min<std::size_t>(header.biClrUsed, all);
}

std::optional<FoundPicture> Picture_At(std::string_view file, const DirectoryEntry &entry) {
    if (entry.offset > file.size() || entry.size > file.size() - entry.offset) return std::nullopt;
    Cut cut(file.substr(entry.offset, entry.size));
    FoundPicture found = {};
    if (!cut.Take(found.header) || !Is_Usable(found.header)) return std::nullopt;
    found.height = found.header.biHeight / 2;
    const auto rows = static_cast<std::size_t>(found.height);
    const bool whole =
        cut.Take(Colour_Count(found.header) * sizeof(RGBQUAD), found.colours) &&
        cut.Take(rows * Row_Size(found.header.biWidth, found.header.biBitCount, 32), found.rows) &&
        cut.Take(rows * Row_Size(found.header.biWidth, 1, 32), found.mask_rows);
    return whole ? std::optional(found) : std::nullopt;
}

// None for what is no icon file.
std::vector<DirectoryEntry> Entries_Of(std::string_view file) {
    Cut cut(file);
    Directory directory;
    if (!cut.Take(directory) || directory.reserved != 0 || directory.type != 1) return {};
    std::vector<DirectoryEntry> entries(directory.count);
    for (DirectoryEntry &entry : entries) {
        if (!cut.Take(entry)) return {};
    }
    return entries;
}

// The less, the better: size before depth. A larger size goes before a smaller one; of depths the nearest,
// but none beyond the screen's before one within it.
auto Unfitness(const FoundPicture &picture, LONG wanted, WORD depth) {
    const LONG width = picture.header.biWidth;
    const WORD bits = picture.header.biBitCount;
    return std::tuple(width == wanted  ? 0
                      : width > wanted ? 1
                                       : 2,
                      std::abs(width - wanted), bits > depth, std::abs(int{depth} - bits));
}

std::optional<FoundPicture> Best_Picture(std::string_view file, LONG wanted) {
    const WORD depth = Screen_Depth();
    std::optional<FoundPicture> best;
    for (const DirectoryEntry &entry : Entries_Of(file)) {
        const auto found = Picture_At(file, entry);
        if (!found) continue;
        if (!best || Unfitness(*found, wanted, depth) < Unfitness(*best, wanted, depth)) best = found;
    }
    return best;
}

std::unique_ptr<Bitmap> Bitmap_Of(const FoundPicture &picture, WORD bits, std::string_view rows) {
    auto made = New_Bitmap(picture.header.biWidth, picture.height, bits);
    if (!made) return made;
    made->bottom_up = true;
    std::memcpy(made->pixels.get(), rows.data(), rows.size());
    return made;
}

HICON Extract(std::string_view file, LONG side) {
    const auto picture = Best_Picture(file, side);
    if (!picture) return nullptr;
    const auto mask = Bitmap_Of(*picture, 1, picture->mask_rows);
    const auto colours = Bitmap_Of(*picture, picture->header.biBitCount, picture->rows);
    if (!mask || !colours) return nullptr;
    if (!picture->colours.empty()) {
        std::fill(colours->colours.begin(), colours->colours.end(), RGBQUAD{});
        std::memcpy(colours->colours.data(), picture->colours.data(), picture->colours.size());
    }
    auto made = Icon_Of(*mask, colours.get(), {side, side});
    return made ? Enter_Icon(std::move(made)) : nullptr;
}

UINT Extract_First(std::string_view file, HICON *large, HICON *small) {
    const ObjectLock lock;
    const HICON first = large ? Extract(file, GetSystemMetrics(SM_CXICON)) : nullptr;
    HICON second = nullptr;
    try {
        if (small) second = Extract(file, GetSystemMetrics(SM_CXSMICON));
    } catch (...) {
        if (first) DestroyIcon(first);
        throw;
    }
    if (large) *large = first;
    if (small) *small = second;
    return first || second ? 1 : 0;
}

} // namespace

extern "C" UINT ExtractIconExA(LPCSTR path, int index, HICON *large, HICON *small, UINT count) {
    if (large) std::fill_n(large, count, nullptr);
    if (small) std::fill_n(small, count, nullptr);
    return Within_Memory(Failed, [&]() -> UINT {
        std::string file;
        if (!Read_File(path, file)) return Failed;
        if (index == -1 && !large && !small) return Entries_Of(file).empty() ? 0 : 1;
        return index == 0 && count > 0 ? Extract_First(file, large, small) : 0;
    });
}
