// Telephone numbers: taking one apart beside the host's ways, and having one translated beside what the
// service alone takes for it.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <reference_suite/installer/install_suite.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/telephony.h>

#include <cstring>
#include <filesystem>
#include <regex>

namespace {

constexpr char Number[] = "+1 (206) 555-1212";

struct Fields {
    char field[4][255];
};

bool Split(const char *number, Fields &fields) {
    auto &[country, area, exchange, line] = fields.field;
    return Parse_Canonical_Number(number, country, area, exchange, line) == 0;
}

bool Split_By_Scanf(const char *number, Fields &fields) {
    auto &[country, area, exchange, line] = fields.field;
    return std::sscanf(number, "+%254[^ \t(]%*[ \t(]%254[^)]%*[ \t)]%254[^- \t]%*[- \t]%254[^ \t]", country,
                       area, exchange, line) == 4;
}

bool Split_By_Regex(const char *number, Fields &fields) {
    static const std::regex pattern(R"(^\+([^ \t(]+)[ \t(]+([^)]+)[ \t)]+([^- \t]+)[- \t]+([^ \t]+))",
                                    std::regex::optimize);
    static std::cmatch match;
    if (!std::regex_search(number, match, pattern)) return false;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t length = std::min<std::size_t>(254, match[i + 1].length());
        std::memcpy(fields.field[i], match[i + 1].first, length);
        fields.field[i][length] = 0;
    }
    return true;
}

template <class Peer>
void Compare_With(const char *what, Peer peer, double limit) {
    Fields ours, theirs;
    measure::Compare(
        what,
        MEASURED {
            measure::Keep(Split(measure::Hidden(Number), ours));
            measure::Keep(ours);
        },
        MEASURED {
            measure::Keep(peer(measure::Hidden(Number), theirs));
            measure::Keep(theirs);
        },
        limit);
}

void Measure_Splitting() {
    measure::Heading("telephony", "std::regex");
    Compare_With("a canonical number into its fields", Split_By_Regex, 0.25);
    measure::Heading("telephony", "sscanf");
    Compare_With("a canonical number into its fields", Split_By_Scanf, 1.0);
}

/// What the library asks of the service for one number, asked by hand.
class Service {
  public:
    Service() {
        DWORD devices = 0;
        Find<LineInitialize>("lineInitialize")(&application_, nullptr, Ignore, nullptr, &devices);
    }
    void Translate() {
        for (const DWORD size : {sizeof(LINETRANSLATECAPS), sizeof record_}) {
            *record_ = size;
            caps_(application_, Version, reinterpret_cast<LINETRANSLATECAPS *>(record_));
        }
        select_(application_, 0);
        DWORD version = 0;
        LINEEXTENSIONID extension;
        negotiate_(application_, 0, Version, Version, &version, &extension);
        *record_ = 1024;
        devices_(application_, 0, version, 0, reinterpret_cast<LINEDEVCAPS *>(record_));
        *record_ = 256;
        translate_(application_, 0, Version, Number, 0, LINETRANSLATEOPTION_CANCELCALLWAITING,
                   reinterpret_cast<LINETRANSLATEOUTPUT *>(record_));
    }

  private:
    static constexpr DWORD Version = 0x10004;
    static void Ignore(DWORD, DWORD, DWORD, DWORD, DWORD, DWORD) {}
    template <class Entry>
    Entry *Find(const char *name) const {
        const FARPROC entry = GetProcAddress(module_, name);
        if (!entry) std::abort();
        return reinterpret_cast<Entry *>(entry);
    }

    const HMODULE module_ = LoadLibraryA("TAPI32.DLL");
    LineGetTranslateCaps *const caps_ = Find<LineGetTranslateCaps>("lineGetTranslateCaps");
    LineSetCurrentLocation *const select_ = Find<LineSetCurrentLocation>("lineSetCurrentLocation");
    LineNegotiateAPIVersion *const negotiate_ = Find<LineNegotiateAPIVersion>("lineNegotiateAPIVersion");
    LineGetDevCaps *const devices_ = Find<LineGetDevCaps>("lineGetDevCaps");
    LineTranslateAddress *const translate_ = Find<LineTranslateAddress>("lineTranslateAddress");
    HLINEAPP application_ = 0;
    DWORD record_[1024];
};

void Measure_Translation() {
    char dialable[256];
    Service service;
    if (Setup_TAPI(nullptr) != 0) std::abort();
    Create_Dial_Number(Number, "Home", dialable, nullptr);
    if (std::strcmp(dialable, "T*70,5551212") != 0) std::abort();
    service.Translate();
    measure::Heading("telephony", "the service asked by hand");
    measure::Compare(
        "a number translated", MEASURED { Create_Dial_Number(Number, "Home", dialable, nullptr); },
        MEASURED { service.Translate(); }, 1.1);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    if (!Install_Suite(program.parent_path().parent_path() / "suite").empty()) return 1;
    measure::Use_Plain_Memory();
    Measure_Splitting();
    Measure_Translation();
    return 0;
}
