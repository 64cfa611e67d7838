#include <tools/ltx/merge.h>
#include <tools/progress.h>

#include <map>
#include <set>
#include <unordered_map>

namespace tools::ltx {

namespace {

/// An identifier, and how many strings before this one have it.
using Key = std::pair<std::string, unsigned long>;

class Keys {
  public:
    Key Next(const std::string &identifier) { return {identifier, seen_[identifier]++}; }

  private:
    std::unordered_map<std::string, unsigned long> seen_;
};

std::map<Key, std::string> Texts_Of(const std::vector<LocatedString> &strings) {
    std::map<Key, std::string> texts;
    Keys keys;
    for (const LocatedString &each : strings) texts[keys.Next(each.string.identifier)] = each.string.text;
    return texts;
}

std::map<Key, TranslatedString *> Strings_Of(Translation &translation) {
    std::map<Key, TranslatedString *> strings;
    Keys keys;
    for (TranslatedString &each : translation.strings) strings[keys.Next(each.string.identifier)] = &each;
    return strings;
}

TranslatedString Fresh(const TableString &source, MergeCounts &counts) {
    ++counts.added;
    return {source, {}, true, {}, source.text};
}

/// One that waits for its translation: the text follows the source's as long as it is that.
void Carry_Into_New(const std::string &source, TranslatedString &string, MergeCounts &counts) {
    if (string.string.text == string.source) string.string.text = source;
    ++counts.added;
}

void Carry_Into_Known(const std::string &source, TranslatedString &string, MergeCounts &counts) {
    if (!string.changed_from && string.source != source) string.changed_from = string.source;
    if (string.changed_from == source) string.changed_from.reset();
    ++(string.changed_from ? counts.changed : counts.kept);
}

void Carry_Into(const TableString &source, TranslatedString &string, MergeCounts &counts) {
    if (string.is_new) {
        Carry_Into_New(source.text, string, counts);
    } else {
        if (!string.source && !string.changed_from) ++counts.unknown;
        Carry_Into_Known(source.text, string, counts);
    }
    string.source = source.text;
    string.string.type = source.type;
    if (string.string.comments.empty()) string.string.comments = source.comments;
}

void Add_Gone(const TranslatedString &string, std::vector<std::string> &lines) {
    lines.insert(lines.end(), string.comments.begin(), string.comments.end());
    for (std::string &mark : Gone_Marks(string.string)) lines.push_back(std::move(mark));
}

} // namespace

Translation Merge(const std::vector<LocatedString> &source, Translation translation,
                  const std::vector<LocatedString> &earlier, MergeCounts &counts) {
    const std::map<Key, std::string> earlier_texts = Texts_Of(earlier);
    std::map<Key, TranslatedString *> there = Strings_Of(translation);
    Translation merged = {translation.head, {}, translation.rest};
    Keys keys;
    Progress progress("merging", source.size());
    for (const LocatedString &each : source) {
        progress.Step();
        const Key key = keys.Next(each.string.identifier);
        const auto found = there.find(key);
        if (found == there.end()) {
            merged.strings.push_back(Fresh(each.string, counts));
            continue;
        }
        TranslatedString &string = *found->second;
        const auto before = earlier_texts.find(key);
        if (!string.source && before != earlier_texts.end()) string.source = before->second;
        Carry_Into(each.string, string, counts);
        merged.strings.push_back(std::move(string));
        there.erase(found);
    }
    counts.gone = there.size();
    std::set<const TranslatedString *> left; // to be told in the translation's order
    for (const auto &[key, string] : there) left.insert(string);
    for (const TranslatedString &each : translation.strings) {
        if (left.contains(&each)) Add_Gone(each, merged.rest);
    }
    return merged;
}

} // namespace tools::ltx
