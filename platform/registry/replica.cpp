#include <platform/registry/replica.h>

#include <platform/errors.h>
#include <platform/kernel/machine_state.h>
#include <platform/registry/file_time.h>

#include <cerrno>
#include <cstdio>

namespace {

constexpr std::size_t Block_Size = 256u << 10;

/// Writes records one behind the other, in blocks.
class RecordWriter {
  public:
    explicit RecordWriter(const StoreFile &file) : file_(file) {}

    void Add(const RegistryRecord &record) {
        if (error_) return;
        const std::size_t at = offset_ + bytes_.size();
        if (at + Record_Size(record.name.size(), record.data.size()) > Largest_Registry_File) {
            error_ = ERROR_DISK_FULL;
            return;
        }
        Append_Record(record, file_.Header().number, static_cast<std::uint32_t>(at), bytes_);
        if (bytes_.size() >= Block_Size) Write();
    }

    long Finish() {
        if (!error_ && !bytes_.empty()) Write();
        return error_;
    }
    std::uint32_t End() const { return offset_; }

  private:
    void Write() {
        error_ = file_.Write(offset_, bytes_.data(), bytes_.size());
        offset_ += static_cast<std::uint32_t>(bytes_.size());
        bytes_.clear();
    }

    const StoreFile &file_;
    std::uint32_t offset_ = Records_Offset;
    std::vector<unsigned char> bytes_;
    long error_ = 0;
};

} // namespace

std::string Path_Aside(const std::string &path) {
    return path + ".new";
}

long Replica::Open(const std::string &path) {
    StoreFile::Opened opened = StoreFile::Open(path);
    if (opened.error) return opened.error;
    file = std::move(opened.file);
    end = Records_Offset;
    tree = file ? std::make_unique<KeyTree>(file->Header().made, file->Header().first_free_key)
                : std::make_unique<KeyTree>(File_Time_Now());
    return NO_ERROR;
}

long Replica::Read(std::uint32_t to, std::uint32_t settled, const std::string &name) {
    StoreFile::Scanned scanned;
    try {
        scanned = file->Scan(end, to, [this](const RegistryRecord &record) { tree->Apply(record); });
    } catch (...) {
        *this = {};
        throw;
    }
    if (scanned.error) return scanned.error;
    if (settled > scanned.end) {
        scanned.damaged += settled - scanned.end;
        scanned.end = settled;
    }
    end = scanned.end;
    if (scanned.damaged > 0) {
        tree->Skip_Numbers(scanned.damaged / sizeof(RecordHeader) + 1);
        Report_Machine_Trouble(name + ": " + std::to_string(scanned.damaged) +
                               " damaged bytes are passed over");
    }
    return NO_ERROR;
}

WrittenAside Write_Aside(const std::string &path, const KeyTree &tree, std::uint32_t generation) {
    const std::string aside = Path_Aside(path);
    unlink(aside.c_str()); // left by the killed
    RegistryFileHeader header = {};
    header.made = tree.Made();
    header.generation = generation;
    header.first_free_key = tree.First_Free();
    StoreFile::Opened made = StoreFile::Make(aside, header);
    WrittenAside written{std::move(made.file), 0, made.error};
    if (!written.error) {
        RecordWriter writer(*written.file);
        tree.Carry([&](const RegistryRecord &record) { writer.Add(record); });
        written.error = writer.Finish();
        written.end = writer.End();
    }
    if (written.error) {
        unlink(aside.c_str());
        written.file.reset();
    }
    return written;
}

long Put_In_Place(const std::string &path, const StoreFile &file) {
    const std::string aside = Path_Aside(path);
    long error = file.Flush();
    if (!error && rename(aside.c_str(), path.c_str()) != 0) {
        error = Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
    }
    if (error) {
        unlink(aside.c_str());
        return error;
    }
    // When this fails, whoever flushes the registry does it again.
    (void)Flush_Folder(path.substr(0, path.rfind('/')));
    return NO_ERROR;
}
