#pragma once
// A new source text carried into a translation.

#include <tools/ltx/translation.h>

namespace tools::ltx {

struct MergeCounts {
    unsigned long kept = 0, added = 0, changed = 0, gone = 0;
    unsigned long unknown = 0; // of those kept: nobody knows of which source text they were made
};

/// The translation's strings in the order of `source`, each with the source's text beside it, marked where
/// there is work. A string has the source's type, and the source's comments if it has none. Strings go
/// together by identifier, the second of one with the second. `earlier` is the source that the translation
/// was made from, for strings that do not tell; it may be empty. Marks that still stand in the translation
/// stay; a source text that is again what the translation was made from is no change any more.
Translation Merge(const std::vector<LocatedString> &source, Translation translation,
                  const std::vector<LocatedString> &earlier, MergeCounts &counts);

} // namespace tools::ltx
