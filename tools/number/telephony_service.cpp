#include <tools/failure.h>
#include <tools/number/telephony_service.h>

#include <kelmara/connectivity/tapi.h>

#include <platform/kernel.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tools {

namespace {

constexpr DWORD Api_Version = 0x00010004;
constexpr DWORD First_Size = 4096;
constexpr int Most_Tries = 8; // for settings that grow meanwhile

void Ignore_Line_Event(DWORD, DWORD, DWORD, DWORD, DWORD, DWORD) {}

template <class Entry>
Entry *Find(HMODULE module, const char *name) {
    const FARPROC entry = GetProcAddress(module, name);
    if (entry == nullptr) throw Failure(Exit_Unusable, std::string("the telephony service lacks ") + name);
    return reinterpret_cast<Entry *>(entry);
}

/// A record with what stands behind it, in the size that the service wants.
template <class Record>
class SizedRecord {
  public:
    /// `fill` is asked again in a larger block while the record does not fit. What it answered last.
    template <class Fill>
    LONG Get(Fill fill) {
        DWORD size = First_Size;
        for (int tries = 0; tries < Most_Tries; ++tries) {
            bytes_.assign(size, 0);
            std::memcpy(bytes_.data(), &size, sizeof size);
            const LONG error = fill(reinterpret_cast<Record *>(bytes_.data()));
            if (error != 0 || Fixed().dwNeededSize <= size) return error;
            size = Fixed().dwNeededSize;
        }
        return LINEERR_OPERATIONFAILED;
    }

    Record Fixed() const { return At<Record>(0); }
    /// Cleared where it does not lie in the record.
    template <class Part>
    Part At(std::size_t offset) const {
        Part part = {};
        if (offset <= bytes_.size() && bytes_.size() - offset >= sizeof part)
            std::memcpy(&part, &bytes_[offset], sizeof part);
        return part;
    }
    std::string Text(DWORD offset, DWORD size) const {
        if (offset == 0 || offset > bytes_.size()) return "";
        const std::size_t most = std::min<std::size_t>(size, bytes_.size() - offset);
        return std::string(&bytes_[offset], strnlen(&bytes_[offset], most));
    }

  private:
    std::vector<char> bytes_;
};

DialLocation Location_Of(const SizedRecord<LINETRANSLATECAPS> &record, std::size_t offset) {
    const auto entry = record.At<LINELOCATIONENTRY>(offset);
    return {entry.dwPermanentLocationID,
            record.Text(entry.dwLocationNameOffset, entry.dwLocationNameSize),
            record.Text(entry.dwLocalAccessCodeOffset, entry.dwLocalAccessCodeSize),
            record.Text(entry.dwLongDistanceAccessCodeOffset, entry.dwLongDistanceAccessCodeSize),
            record.Text(entry.dwCancelCallWaitingOffset, entry.dwCancelCallWaitingSize),
            (entry.dwOptions & LINELOCATIONOPTION_PULSEDIAL) != 0};
}

} // namespace

const DialLocation *DialLocations::Named(const std::string &name) const {
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const DialLocation &each) { return each.name == name; });
    return found == all.end() ? nullptr : &*found;
}

const DialLocation *DialLocations::Current() const {
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const DialLocation &each) { return each.id == current; });
    return found == all.end() ? nullptr : &*found;
}

TelephonyService::TelephonyService() : module_(LoadLibraryA("TAPI32.DLL")) {
    if (module_ == nullptr)
        throw Failure(Exit_Negative, "there is no telephony service on this machine (TAPI32.DLL)");
    DWORD devices = 0;
    const LONG error = Find<LineInitialize>(module_, "lineInitialize")(
        &application_, GetModuleHandleA(nullptr), Ignore_Line_Event, nullptr, &devices);
    if (error != 0)
        throw Failure(Exit_Unusable, "the telephony service does not answer: " + Telephony_Error(error));
}

DialLocations TelephonyService::Locations() const {
    SizedRecord<LINETRANSLATECAPS> record;
    auto *const tell = Find<LineGetTranslateCaps>(module_, "lineGetTranslateCaps");
    const LONG error =
        record.Get([&](LINETRANSLATECAPS *caps) { return tell(application_, Api_Version, caps); });
    if (error != 0)
        throw Failure(Exit_Unusable,
                      "the telephony service does not tell its locations: " + Telephony_Error(error));
    const LINETRANSLATECAPS caps = record.Fixed();
    DialLocations locations{{}, caps.dwCurrentLocationID};
    const DWORD most = caps.dwLocationListSize / sizeof(LINELOCATIONENTRY);
    for (DWORD i = 0; i < std::min(caps.dwNumLocations, most); ++i)
        locations.all.push_back(
            Location_Of(record, caps.dwLocationListOffset + i * sizeof(LINELOCATIONENTRY)));
    return locations;
}

Translation TelephonyService::Translate(const std::string &number) const {
    SizedRecord<LINETRANSLATEOUTPUT> record;
    auto *const translate = Find<LineTranslateAddress>(module_, "lineTranslateAddress");
    Translation translation;
    translation.error = record.Get([&](LINETRANSLATEOUTPUT *output) {
        return translate(application_, 0, Api_Version, number.c_str(), 0,
                         LINETRANSLATEOPTION_CANCELCALLWAITING, output);
    });
    if (translation.error != 0) return translation;
    const LINETRANSLATEOUTPUT output = record.Fixed();
    translation.dialable = record.Text(output.dwDialableStringOffset, output.dwDialableStringSize);
    translation.displayable = record.Text(output.dwDisplayableStringOffset, output.dwDisplayableStringSize);
    translation.results = output.dwTranslateResults;
    translation.destination_country = output.dwDestCountry;
    translation.size = output.dwNeededSize;
    return translation;
}

std::string Telephony_Error(LONG error) {
    constexpr struct {
        LONG error;
        const char *text;
    } Known[] = {
        {LINEERR_BADDEVICEID, "there is no line device"},
        {LINEERR_INIFILECORRUPT, "no dialling location is the current one"},
        {LINEERR_INVALADDRESS, "this is no number that can be dialled"},
        {LINEERR_INVALCOUNTRYCODE, "the location's country is not known"},
        {LINEERR_NOMEM, "not enough memory"},
    };
    for (const auto &known : Known)
        if (known.error == error) return known.text;
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(error));
    return std::string("error ") + code + " of telephony";
}

} // namespace tools
