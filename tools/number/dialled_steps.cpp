#include <tools/number/dialled_steps.h>

#include <string_view>

namespace tools {

namespace {

constexpr std::string_view Between = " ()";

std::string_view Trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(Between);
    if (start == text.npos) return {};
    return text.substr(start, text.find_last_not_of(Between) - start + 1);
}

/// A number's area, empty for none, and what stands behind it.
struct WrittenNumber {
    std::string_view area, number;
};

WrittenNumber Take_Apart(std::string_view text) {
    text = text.substr(0, text.find_first_of("|^\r\n"));
    const std::size_t open = text.find('('), close = text.find(')');
    if (open != text.npos && close != text.npos && open < close)
        return {Trimmed(text.substr(open + 1, close - open - 1)), Trimmed(text.substr(close + 1))};
    const std::size_t behind_country = text.find_first_not_of("+0123456789");
    return {{}, behind_country == text.npos ? std::string_view() : Trimmed(text.substr(behind_country))};
}

class Steps {
  public:
    explicit Steps(std::string_view shown) : rest_(shown) {}

    void Add(std::string_view part, const std::string &rule) {
        if (!part.empty()) all_.push_back({std::string(part), rule});
    }
    /// When the rest begins with that part.
    void Take(const std::string &part, const std::string &rule) {
        const std::string_view wanted = Trimmed(part);
        if (wanted.empty() || !rest_.starts_with(wanted)) return;
        Add(wanted, rule);
        rest_.remove_prefix(wanted.size());
        rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size()));
    }
    /// What the country's rule made of the number: a prefix, the area and the number itself.
    void Take_Number(const Translation &translation, const WrittenNumber &written);

    std::vector<DialledStep> All() && { return std::move(all_); }

  private:
    void Take_Prefix(std::string_view prefix, const Translation &translation);

    std::string_view rest_;
    std::vector<DialledStep> all_;
};

void Steps::Take_Prefix(std::string_view prefix, const Translation &translation) {
    const bool abroad = (translation.results & LINETRANSLATERESULT_INTERNATIONAL) != 0;
    const std::string country = std::to_string(translation.destination_country);
    if (abroad && prefix.ends_with(country)) {
        Add(Trimmed(prefix.substr(0, prefix.size() - country.size())),
            "the country's way out to other countries");
        Add(country, "the code of the number's country");
    } else
        Add(prefix,
            abroad ? "the country's way out to other countries" : "the country's prefix of area codes");
}

void Steps::Take_Number(const Translation &translation, const WrittenNumber &written) {
    if (written.number.empty() || !rest_.ends_with(written.number))
        return Add(rest_, "the number, by the rules of the country");
    std::string_view front = Trimmed(rest_.substr(0, rest_.size() - written.number.size()));
    // An area may have lost the digits in front that count within its country only.
    std::string_view area = written.area;
    while (!area.empty() && !front.ends_with(area)) area.remove_prefix(1);
    front.remove_suffix(area.size());
    Take_Prefix(Trimmed(front), translation);
    const std::string lost(written.area.substr(0, written.area.size() - area.size()));
    Add(area, lost.empty() ? "the area code" : "the area code, without its \"" + lost + "\"");
    Add(written.number, "the number as written");
}

} // namespace

std::string Road_Of(const Translation &translation) {
    if (translation.results & LINETRANSLATERESULT_INTERNATIONAL) return "international";
    if (translation.results & LINETRANSLATERESULT_LONGDISTANCE) return "long distance";
    return translation.results & LINETRANSLATERESULT_LOCAL ? "local" : "as written";
}

std::vector<DialledStep> Steps_Of(const Translation &translation, const DialLocation &from,
                                  const std::string &number) {
    Steps steps(translation.displayable);
    const std::string_view first = std::string_view(translation.dialable).substr(0, 1);
    if (first == "T") steps.Add(first, "tones, as the location dials");
    if (first == "P") steps.Add(first, "pulses, as the location dials");
    const bool is_translated = (translation.results & LINETRANSLATERESULT_NOTRANSLATION) == 0;
    if (!is_translated) {
        steps.Add(translation.displayable, "not canonical: dialled as it is written");
        return std::move(steps).All();
    }
    steps.Take(from.cancel_call_waiting, "the location's code that turns call waiting off");
    if (translation.results & LINETRANSLATERESULT_LOCAL)
        steps.Take(from.local_access, "the location's way to an outside line");
    else
        steps.Take(from.long_distance_access, "the location's way to a line for long distance");
    steps.Take_Number(translation, Take_Apart(number));
    return std::move(steps).All();
}

} // namespace tools
