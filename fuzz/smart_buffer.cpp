// A CSmartBuffer and a std::string with a cursor, told to do the same, hold the same.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/containers/smart_buffer.h>

namespace {

class Buffer : public CSmartBuffer {
  public:
    long Block_Size() const { return Capacity; }
};

struct Model {
    std::string data;
    std::size_t cursor = 0;

    void Write(const std::string &bytes) {
        if (cursor > data.size()) data.resize(cursor);
        data.replace(cursor, bytes.size(), bytes);
        cursor += bytes.size();
    }
    void Insert(const std::string &bytes) {
        if (cursor > data.size()) return Write(bytes);
        data.insert(cursor, bytes);
        cursor += bytes.size();
    }
    void Replace(const std::string &find, const std::string &replacement, bool all) {
        cursor = 0;
        if (find.empty()) {
            data.insert(0, replacement);
            cursor = replacement.size();
            return;
        }
        for (std::size_t at = 0; (at = data.find(find, at)) != std::string::npos;) {
            data.replace(at, find.size(), replacement);
            cursor = at += replacement.size();
            if (!all) return;
        }
    }
};

void Do_Both(Buffer &buffer, Model &model, FuzzInput &input) {
    const unsigned what = input.Byte();
    const long number = static_cast<signed char>(input.Byte());
    const std::string bytes(input.Take(input.Byte() % 24));
    const auto size = static_cast<long>(bytes.size());
    switch (what % 7) {
    case 0:
        REQUIRE(buffer.Write(bytes.data(), size) == 0);
        return size ? model.Write(bytes) : void();
    case 1:
        REQUIRE(buffer.Insert(bytes.data(), size) == 0);
        return size ? model.Insert(bytes) : void();
    case 2: {
        const long to = number < 0 ? static_cast<long>(model.data.size()) + number : number;
        // Behind the data stands what was there before, which the model does not keep.
        if (to > static_cast<long>(model.data.size())) return;
        const bool moves = to >= 0;
        REQUIRE(buffer.Move_To(to) == (moves ? 0 : -1));
        if (moves) model.cursor = static_cast<std::size_t>(to);
        return;
    }
    case 3: {
        const std::string text = bytes.c_str();
        const std::size_t at = model.data.find(text, what & 0x80 ? 0 : model.cursor);
        REQUIRE(buffer.Move_To(text.c_str(), what & 0x80) == (at == std::string::npos ? -1 : 0));
        if (at != std::string::npos) model.cursor = at;
        return;
    }
    case 4:
        REQUIRE(buffer.Delete(number) == 0);
        if (number > 0) model.data.erase(model.cursor, static_cast<std::size_t>(number));
        return;
    case 5: {
        const std::string find = bytes.substr(0, bytes.find('|')).c_str();
        const std::string replacement = bytes.substr(std::min(bytes.size(), find.size() + 1)).c_str();
        REQUIRE(buffer.Search_And_Replace(find.c_str(), replacement.c_str(), what & 0x80) == 0);
        return model.Replace(find, replacement, what & 0x80);
    }
    default: {
        const std::string kept(static_cast<std::size_t>(number < 0 ? 0 : number), 'x');
        const ExactBytes target(kept);
        const bool fits = number >= 0 && buffer.Get_Current_Offset() + number <= buffer.Block_Size();
        REQUIRE(buffer.Read(target.Get(), number, false) == (fits ? 0 : -1));
        if (!fits) return;
        const std::string expected = model.data.substr(model.cursor, kept.size());
        REQUIRE(std::string_view(target.Get(), expected.size()) == expected);
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    Buffer buffer;
    Model model;
    REQUIRE(buffer.Initialize(input.Byte() % 64) == 0);
    while (input.More()) {
        Do_Both(buffer, model, input);
        const auto length = static_cast<std::size_t>(buffer.Get_End_Of_Data());
        REQUIRE(length == model.data.size() &&
                static_cast<std::size_t>(buffer.Get_Current_Offset()) == model.cursor);
        REQUIRE(std::string_view(static_cast<char *>(buffer), length) == model.data);
        if (length > 4096) break;
    }
    return 0;
}
