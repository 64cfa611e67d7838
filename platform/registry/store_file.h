#pragma once
// One file of the registry, open: its header, reading the records in it, and writing behind them.
//
// Nothing here takes a lock or decides where the records end. A file may grow, shrink or be damaged at any
// time: what cannot be read, or does not verify, is passed over.

#include <platform/kernel/file_descriptor.h>
#include <platform/registry/record.h>

#include <memory>
#include <string>
#include <sys/stat.h>

/// A larger file is refused: it is no registry of this machine, and its records would not fit into memory.
inline constexpr std::uint32_t Largest_Registry_File = 512u << 20;

class StoreFile {
  public:
    struct Opened {
        std::shared_ptr<StoreFile> file; // null when there is none, and on failure
        long error = 0;                  // a code of errors.h: ERROR_BADDB for what is not a registry
    };
    /// Opens the file for reading and writing, or for reading alone where that is all that may be done. One
    /// that is not there, or empty, is not an error.
    static Opened Open(const std::string &path);
    /// Makes a file, for its owner alone, that was not there before, and completes and writes its header.
    static Opened Make(const std::string &path, RegistryFileHeader header);

    const RegistryFileHeader &Header() const { return header_; }
    bool Is(const struct stat &status) const { return status.st_ino == inode_ && status.st_dev == device_; }

    /// Of the file that is open, whatever has its name by now. ERROR_BADDB for one that is too large.
    long Find_Size(std::uint32_t &size) const;

    struct Scanned {
        std::uint32_t end = 0;     // behind the last whole record
        std::uint32_t damaged = 0; // bytes before `end` that are in no whole record
        long error = 0;            // a code of errors.h when the file cannot be read
    };
    /// Hands every whole record that begins in `from` up to `to` and ends there to `take`.
    template <class Take>
    Scanned Scan(std::uint32_t from, std::uint32_t to, Take take) const;

    /// Writes all of the bytes; on failure the file may have some of them.
    long Write(std::uint32_t offset, const unsigned char *bytes, std::size_t size) const;
    long Cut(std::uint32_t size) const;
    /// Returns when what was written, by any process, is on the disk.
    long Flush() const;

  private:
    /// A part of the file in memory.
    class Window {
      public:
        Window(int descriptor, std::uint32_t end) : descriptor_(descriptor), end_(end) {}
        /// The bytes at `offset`; null when the file does not have them, or cannot be read.
        const unsigned char *At(std::uint32_t offset, std::uint32_t size);
        long Error() const { return error_; }

      private:
        int descriptor_;
        std::uint32_t start_ = 0, end_;
        std::vector<unsigned char> bytes_;
        long error_ = 0;
    };

    StoreFile(FileDescriptor descriptor, const RegistryFileHeader &header, const struct stat &status)
        : descriptor_(std::move(descriptor)),
          header_(header),
          inode_(status.st_ino),
          device_(status.st_dev) {}

    FileDescriptor descriptor_;
    RegistryFileHeader header_;
    ino_t inode_;
    dev_t device_;
};

/// The code for a failed call of the host, `otherwise` when errno tells nothing more.
long Registry_Error_Of_Errno(int code, long otherwise);

/// Puts a folder's names on the disk.
long Flush_Folder(const std::string &path);

template <class Take>
StoreFile::Scanned StoreFile::Scan(std::uint32_t from, std::uint32_t to, Take take) const {
    Scanned scanned;
    scanned.end = from;
    std::uint32_t whole = 0;
    Window window(descriptor_.Get(), to);
    for (std::uint32_t at = from; to - at >= sizeof(RecordHeader) && at < to;) {
        const unsigned char *header = window.At(at, sizeof(RecordHeader));
        if (!header) break;
        const std::uint32_t size = Size_Of_Record(header, header_.number, at);
        if (size == 0) {
            at += 8;
            continue;
        }
        if (size > to - at) break;
        const unsigned char *bytes = window.At(at, size);
        if (!bytes) break;
        RegistryRecord record;
        if (Read_Record({bytes, size}, header_.number, at, record)) {
            take(record);
            whole += size;
            scanned.end = at + size;
        }
        at += size;
    }
    scanned.damaged = scanned.end - from - whole;
    scanned.error = window.Error();
    return scanned;
}
