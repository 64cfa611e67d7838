#include <tools/ltx/table_image.h>
#include <tools/ltx/table_layout.h>

#include <algorithm>
#include <cstring>

namespace tools::ltx {

namespace {

constexpr std::size_t Most_Faults = 50;

template <class Number>
std::string Shown(Number number) {
    return std::to_string(number);
}

StringEntry Entry_At(const std::string &image, std::size_t place) {
    StringEntry entry;
    std::memcpy(&entry, image.data() + place, sizeof entry);
    return entry;
}

template <std::size_t Size>
std::string Field_Text(const char (&field)[Size]) {
    return {field, strnlen(field, Size - 1)};
}

template <std::size_t Size>
bool Is_Terminated(const char (&field)[Size]) {
    return std::memchr(field, 0, Size) != nullptr;
}

} // namespace

ImageReader::ImageReader(const std::string &image) : image_(image) {
    Read_Header();
}

void ImageReader::Note(long index, const std::string &text, bool damage) {
    if (faults_.size() == Most_Faults)
        faults_.push_back({index, string_.identifier, "more faults from here on, not told any more", true});
    if (faults_.size() < Most_Faults) faults_.push_back({index, string_.identifier, text, damage});
}

void ImageReader::Read_Header() {
    TableHeader header = {};
    if (image_.size() < sizeof header)
        return Note(ImageFault::Header, "the file has " + Shown(image_.size()) + " bytes, its header takes " +
                                            Shown(sizeof header));
    std::memcpy(&header, image_.data(), sizeof header);
    if (header.first_entry < sizeof header || header.first_entry > image_.size())
        return Note(ImageFault::Header, "the first entry is said to be at offset " +
                                            Shown(header.first_entry) + ", in a file of " +
                                            Shown(image_.size()) + " bytes");
    const auto room = static_cast<long>((image_.size() - header.first_entry) / Frame_Size);
    if (header.count < 0 || header.count > room)
        Note(ImageFault::Header, "the header says " + Shown(header.count) +
                                     " strings, the file has room for " + Shown(room) + " at most");
    if (header.bytes_per_character != 1)
        Note(ImageFault::Header,
             "the header says " + Shown(header.bytes_per_character) + " bytes per character", false);
    if (header.first_entry != sizeof header)
        Note(ImageFault::Header,
             "bytes between the header and the first entry, at offset " + Shown(header.first_entry), false);
    if (header.reserved[0] != 0 || header.reserved[1] != 0)
        Note(ImageFault::Header, "the header's reserved bytes are not zero", false);
    count_ = std::clamp(header.count, 0L, room);
    behind_ = header.first_entry;
}

bool ImageReader::Next() {
    if (behind_ == 0 || index_ + 1 >= count_) return false;
    place_ = behind_;
    ++index_;
    if (image_.size() - place_ < sizeof(StringEntry)) {
        string_ = {};
        Note(index_, "the entry at offset " + Shown(place_) + " does not lie in the file");
        behind_ = 0;
        return false;
    }
    Read_Fields();
    Read_Text();
    Find_Behind();
    return true;
}

void ImageReader::Read_Fields() {
    const StringEntry entry = Entry_At(image_, place_);
    string_.identifier = Field_Text(entry.Identifier);
    string_.comments = Field_Text(entry.Comments);
    string_.type = entry.Type;
    if (!Is_Terminated(entry.Identifier)) Note(index_, "the identifier has no terminator");
    if (!Is_Terminated(entry.Comments)) Note(index_, "the comments have no terminator");
    if (entry.Reserved[0] != 0 || entry.Reserved[1] != 0)
        Note(index_, "the entry's reserved bytes are not zero", false);
}

void ImageReader::Read_Text() {
    const long stated = Entry_At(image_, place_).Length;
    const std::size_t start = place_ + sizeof(StringEntry);
    const auto room = static_cast<long>(image_.size() - start);
    if (stated < 0 || stated > room)
        Note(index_, "the entry at offset " + Shown(place_) + " says its text has " + Shown(stated) +
                         " bytes, of " + Shown(room) + " behind it in the file");
    string_.text.assign(image_, start, static_cast<std::size_t>(std::clamp(stated, 0L, room)));
}

// A size that is wrong may lead to the next entry all the same: only the library's way on is followed.
void ImageReader::Find_Behind() {
    const StringEntry entry = Entry_At(image_, place_);
    const std::size_t size = entry.Size, meant = string_.text.size() + Frame_Size;
    if (size != meant)
        Note(index_, "the entry at offset " + Shown(place_) + " says its size is " + Shown(size) +
                         ", with its text it is " + Shown(meant));
    const bool leads_on = size >= sizeof(StringEntry) && size <= image_.size() - place_;
    if (!leads_on)
        Note(index_, "the size of the entry at offset " + Shown(place_) + ", " + Shown(size) +
                         ", leads to no other place in the file; what is behind it is out of reach");
    behind_ = leads_on ? place_ + size : 0;
}

} // namespace tools::ltx
