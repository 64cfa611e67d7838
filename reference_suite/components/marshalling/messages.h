#pragma once
// The bytes of a call's arguments and results: numbers of 4 bytes, and texts and records behind their
// lengths.
//
// What comes from another process is not trusted: a reader gives nothing beyond its bytes, and says so.

#include <platform/com_marshalling.h>

#include <cstring>
#include <new>
#include <string>
#include <string_view>

class MessageWriter {
  public:
    void Put(long number) { Append(&number, sizeof number); }
    void Put_Bytes(const void *data, std::size_t size) {
        Put(static_cast<long>(size));
        Append(data, size);
    }
    /// With its terminator; a null text is an empty one.
    void Put_Text(const char *text) { Put_Bytes(text ? text : "", text ? std::strlen(text) + 1 : 1); }

    const std::string &Bytes() const { return bytes_; }
    /// There was memory for all of it.
    bool Is_Whole() const { return whole_; }

  private:
    void Append(const void *data, std::size_t size) try {
        bytes_.append(static_cast<const char *>(data), size);
    } catch (const std::bad_alloc &) {
        whole_ = false;
    }

    std::string bytes_;
    bool whole_ = true;
};

class MessageReader {
  public:
    explicit MessageReader(std::string_view bytes) : left_(bytes) {}

    long Get() {
        long number = 0;
        Copy(&number, sizeof number);
        return number;
    }
    std::string_view Get_Bytes() {
        const long size = Get();
        if (size < 0 || static_cast<std::size_t>(size) > left_.size()) {
            broken_ = true;
            return {};
        }
        const std::string_view bytes = left_.substr(0, static_cast<std::size_t>(size));
        left_.remove_prefix(bytes.size());
        return bytes;
    }
    /// A text that ends with the one terminator it has; empty, and the reader broken, for any other.
    const char *Get_Text() {
        const std::string_view bytes = Get_Bytes();
        if (!bytes.empty() && bytes.find('\0') == bytes.size() - 1) return bytes.data();
        broken_ = true;
        return "";
    }
    template <class Record>
    void Get_Record(Record &record) {
        const std::string_view bytes = Get_Bytes();
        if (bytes.size() == sizeof record)
            std::memcpy(&record, bytes.data(), sizeof record);
        else
            broken_ = true;
    }
    /// All of it was there, and nothing else is.
    bool Is_Whole() const { return !broken_ && left_.empty(); }

  private:
    void Copy(void *to, std::size_t size) {
        if (left_.size() < size) {
            broken_ = true;
            return;
        }
        std::memcpy(to, left_.data(), size);
        left_.remove_prefix(size);
    }

    std::string_view left_;
    bool broken_ = false;
};
