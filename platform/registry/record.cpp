#include <platform/registry/record.h>

#include <bit>
#include <cstring>
#include <sys/random.h>

namespace {

constexpr char Magic[8] = {'K', 'M', 'R', 'E', 'G', 'I', 'S', 'T'};

// Every step can be undone when its word is known, so two texts that differ in one word never have the same
// sum.
constexpr std::uint32_t Mixed(std::uint32_t sum, std::uint32_t word) {
    sum ^= std::rotl(word * 0xCC9E2D51u, 15) * 0x1B873593u;
    return std::rotl(sum, 13) * 5 + 0xE6546B64u;
}

constexpr std::uint32_t Finished(std::uint32_t sum) {
    sum = (sum ^ sum >> 16) * 0x85EBCA6Bu;
    sum = (sum ^ sum >> 13) * 0xC2B2AE35u;
    return sum ^ sum >> 16;
}

// `size` is a multiple of 4.
std::uint32_t Sum_Of(std::uint32_t sum, const void *bytes, std::size_t size) {
    const char *at = static_cast<const char *>(bytes);
    for (std::size_t i = 0; i < size; i += 4) {
        std::uint32_t word;
        std::memcpy(&word, at + i, sizeof word);
        sum = Mixed(sum, word);
    }
    return Finished(sum);
}

constexpr std::uint32_t Place(std::uint64_t number, std::uint32_t offset) {
    const auto low = static_cast<std::uint32_t>(number);
    const auto high = static_cast<std::uint32_t>(number >> 32);
    return Mixed(Mixed(Mixed(Registry_Layout_Version, low), high), offset);
}

std::uint32_t Size_Check(std::uint32_t size, std::uint64_t number, std::uint32_t offset) {
    return Finished(Mixed(Place(number, offset), size));
}

constexpr std::size_t Checked_From = offsetof(RecordHeader, kind);

} // namespace

bool Complete_Header(RegistryFileHeader &header) {
    std::memcpy(header.magic, Magic, sizeof Magic);
    header.layout_version = Registry_Layout_Version;
    header.word_size = sizeof(void *);
    if (getrandom(&header.number, sizeof header.number, 0) != sizeof header.number) return false;
    header.check = Sum_Of(Registry_Layout_Version, &header, offsetof(RegistryFileHeader, check));
    return true;
}

bool Is_Header(const RegistryFileHeader &header) {
    return std::memcmp(header.magic, Magic, sizeof Magic) == 0 &&
           header.layout_version == Registry_Layout_Version && header.word_size == sizeof(void *) &&
           header.check == Sum_Of(Registry_Layout_Version, &header, offsetof(RegistryFileHeader, check));
}

void Append_Record(const RegistryRecord &record, std::uint64_t number, std::uint32_t offset,
                   std::vector<unsigned char> &out) {
    RecordHeader header = {};
    header.size = Record_Size(record.name.size(), record.data.size());
    header.size_check = Size_Check(header.size, number, offset);
    header.kind = static_cast<std::uint32_t>(record.kind);
    header.time = record.time;
    header.key = record.key;
    header.detail = record.detail;
    header.name_size = static_cast<std::uint32_t>(record.name.size());
    header.data_size = static_cast<std::uint32_t>(record.data.size());

    const std::size_t start = out.size();
    out.resize(start + header.size);
    unsigned char *at = out.data() + start;
    std::memcpy(at, &header, sizeof header);
    if (!record.name.empty()) std::memcpy(at + sizeof header, record.name.data(), record.name.size());
    if (!record.data.empty()) {
        std::memcpy(at + sizeof header + record.name.size(), record.data.data(), record.data.size());
    }
    header.check = Sum_Of(Place(number, offset), at + Checked_From, header.size - Checked_From);
    std::memcpy(at + offsetof(RecordHeader, check), &header.check, sizeof header.check);
}

std::uint32_t Size_Of_Record(const unsigned char *bytes, std::uint64_t number, std::uint32_t offset) {
    std::uint32_t size, size_check;
    std::memcpy(&size, bytes + offsetof(RecordHeader, size), sizeof size);
    std::memcpy(&size_check, bytes + offsetof(RecordHeader, size_check), sizeof size_check);
    if (size % 8 != 0 || size < sizeof(RecordHeader)) return 0;
    if (size > Record_Size(Longest_Value_Name, Largest_Data)) return 0;
    return size_check == Size_Check(size, number, offset) ? size : 0;
}

bool Read_Record(std::span<const unsigned char> bytes, std::uint64_t number, std::uint32_t offset,
                 RegistryRecord &record) {
    RecordHeader header;
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.check !=
        Sum_Of(Place(number, offset), bytes.data() + Checked_From, bytes.size() - Checked_From)) {
        return false;
    }
    if (header.name_size > Longest_Value_Name || header.data_size > Largest_Data) return false;
    if (Record_Size(header.name_size, header.data_size) != bytes.size()) return false;
    const char *text = reinterpret_cast<const char *>(bytes.data()) + sizeof header;
    record = {static_cast<RecordKind>(header.kind),
              header.key,
              header.detail,
              header.time,
              {text, header.name_size},
              {text + header.name_size, header.data_size}};
    return true;
}
