#include <tools/failure.h>
#include <tools/ltx/table_image.h>
#include <tools/ltx/table_layout.h>

#include <algorithm>
#include <cstring>

namespace tools::ltx {

namespace {

constexpr std::size_t Largest_Image = std::size_t{1} << 30;

void Require_Room(std::size_t size, std::size_t more) {
    if (more > Largest_Image - size) throw Failure(Exit_Unusable, "the table would be over a gigabyte");
}

StringEntry Record_Of(const TableString &string) {
    StringEntry entry = {};
    entry.Size = string.text.size() + Frame_Size;
    entry.Length = static_cast<short>(string.text.size());
    string.identifier.copy(entry.Identifier, Longest_Identifier);
    string.comments.copy(entry.Comments, Longest_Comments);
    entry.Type = string.type;
    return entry;
}

void Add_Entry(std::string &bytes, const TableString &string) {
    const StringEntry entry = Record_Of(string);
    bytes.append(reinterpret_cast<const char *>(&entry), sizeof entry);
    bytes.append(string.text);
    bytes.append(Tail_Size, '\0');
}

TableHeader Header_Of(const std::string &image) {
    TableHeader header;
    std::memcpy(&header, image.data(), sizeof header);
    return header;
}

void Set_Count(std::string &image, long count) {
    TableHeader header = Header_Of(image);
    header.count = count;
    std::memcpy(image.data(), &header, sizeof header);
}

template <std::size_t Size>
void Store(char (&field)[Size], const std::string &text) {
    text.copy(field, Size - 1);
    std::memset(field + text.size(), 0, Size - text.size());
}

} // namespace

ImageBuilder::ImageBuilder(std::size_t strings, std::size_t bytes) {
    constexpr std::size_t Most_Strings = Largest_Image / (Frame_Size + 1);
    image_.reserve(std::min(std::min(strings, Most_Strings) * (Frame_Size + 1) + bytes, Largest_Image));
    const TableHeader header = {sizeof header, 1, 0, {0, 0}};
    image_.assign(reinterpret_cast<const char *>(&header), sizeof header);
}

void ImageBuilder::Append(const TableString &string) {
    Require_Room(image_.size() + static_cast<std::size_t>(count_), string.text.size() + Frame_Size + 1);
    Add_Entry(image_, string);
    ++count_;
}

std::string ImageBuilder::Finish() {
    image_.append(static_cast<std::size_t>(count_), '\0');
    Set_Count(image_, count_);
    return std::move(image_);
}

void Replace_Entry(std::string &image, const ImageReader &at, const TableString &string) {
    Require_Room(image.size(), string.text.size());
    StringEntry entry;
    std::memcpy(&entry, image.data() + at.Place(), sizeof entry);
    entry.Size = string.text.size() + Frame_Size;
    entry.Length = static_cast<short>(string.text.size());
    Store(entry.Identifier, string.identifier);
    Store(entry.Comments, string.comments);
    entry.Type = string.type;
    const std::size_t old_length = at.String().text.size();
    image.replace(at.Place() + sizeof entry, old_length, string.text);
    std::memcpy(image.data() + at.Place(), &entry, sizeof entry);
}

void Delete_Entry(std::string &image, const ImageReader &at) {
    image.erase(at.Place(), at.Behind() - at.Place());
    Set_Count(image, Header_Of(image).count - 1);
}

void Append_Entry(std::string &image, const ImageReader &at, const TableString &string) {
    Require_Room(image.size(), string.text.size() + Frame_Size + 1);
    std::string entry;
    Add_Entry(entry, string);
    image.insert(at.Behind(), entry);
    image += '\0';
    Set_Count(image, Header_Of(image).count + 1);
}

} // namespace tools::ltx
