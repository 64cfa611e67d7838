#pragma once
// Puts a record together, texts and lists behind its fixed part, and hands it out to a caller's.

#include <platform/telephony.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

template <class Record>
class RecordBuilder {
  public:
    /// With `fixed`, which has no texts or lists.
    explicit RecordBuilder(const Record &fixed) : fixed_(fixed), bytes_(sizeof fixed) {
        std::memcpy(bytes_.data(), &fixed, sizeof fixed);
    }

    /// A copy of what is there at `offset`, to be changed and put back.
    template <class Part>
    Part Get(DWORD offset) const {
        Part part;
        std::memcpy(&part, &bytes_[offset], sizeof part);
        return part;
    }
    template <class Part>
    void Put(DWORD offset, const Part &part) {
        std::memcpy(&bytes_[offset], &part, sizeof part);
    }

    /// Room for that many bytes, cleared; where it lies.
    DWORD Add_Room(DWORD size) {
        const DWORD offset = static_cast<DWORD>(bytes_.size());
        bytes_.resize(bytes_.size() + size);
        return offset;
    }
    void Add_Text(const std::string &text, DWORD &size, DWORD &offset) {
        size = static_cast<DWORD>(text.size()) + 1;
        offset = Add_Room(size);
        std::memcpy(&bytes_[offset], text.c_str(), size);
    }

    /// All of it where it fits, the fixed part alone where it does not. LINEERR_STRUCTURETOOSMALL when not
    /// even that fits; `out` is untouched then.
    LONG Hand_Out(Record *out) const {
        const DWORD total = out->dwTotalSize, needed = static_cast<DWORD>(bytes_.size());
        if (total < sizeof(Record)) return LINEERR_STRUCTURETOOSMALL;
        const bool fits = needed <= total;
        const DWORD used = fits ? needed : sizeof(Record);
        std::memcpy(static_cast<void *>(out), fits ? static_cast<const void *>(bytes_.data()) : &fixed_,
                    used);
        out->dwTotalSize = total;
        out->dwNeededSize = needed;
        out->dwUsedSize = used;
        return 0;
    }

  private:
    Record fixed_;
    std::vector<char> bytes_;
};
