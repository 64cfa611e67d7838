// Texts of a registry: any text read, and what was read written and read again, which gives the same.

#include <fuzz/support/fuzz_input.h>

#include <tools/failure.h>
#include <tools/reg/text_reader.h>
#include <tools/reg/text_writer.h>

namespace {

using Sections = std::vector<tools::reg::Section>;

bool Read(const std::string &text, Sections &sections) try {
    sections = tools::reg::Read_Registry_Text(text, "fuzz.reg");
    return true;
} catch (const tools::Failure &failure) {
    REQUIRE(failure.Code() == tools::Exit_Unusable);
    return false;
}

// Only what a machine can hold is ever written, so no deletions; false for a key that no line can carry.
bool Write(const Sections &sections, std::string &text) try {
    tools::reg::Write_Heading(text);
    for (const auto &section : sections) {
        if (section.deleted) continue;
        tools::reg::Write_Key(text, section.key.Text());
        for (const auto &item : section.items) {
            if (item.value) tools::reg::Write_Value(text, section.key.Text(), {item.name, *item.value});
        }
    }
    return true;
} catch (const tools::Failure &) {
    return false;
}

void Leave_Out_Deletions(Sections &sections) {
    std::erase_if(sections, [](const auto &section) { return section.deleted; });
    for (auto &section : sections) std::erase_if(section.items, [](const auto &item) { return !item.value; });
}

void Require_Same(const Sections &left, const Sections &right) {
    REQUIRE(left.size() == right.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
        REQUIRE(left[i].key.Text() == right[i].key.Text() && left[i].items.size() == right[i].items.size());
        for (std::size_t j = 0; j < left[i].items.size(); ++j) {
            REQUIRE(left[i].items[j].name == right[i].items[j].name);
            REQUIRE(left[i].items[j].value == right[i].items[j].value);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Sections sections, again;
    std::string written;
    if (!Read({reinterpret_cast<const char *>(data), size}, sections) || !Write(sections, written)) return 0;
    REQUIRE(Read(written, again));
    Leave_Out_Deletions(sections);
    Require_Same(sections, again);
    return 0;
}
