#pragma once
// The bytes of a string table: read entry by entry, with all that is wrong with them, built, and edited in
// place. CStringTable takes the same files, repairs silently what it reads, and walks to each entry anew.
//
// Built and edited tables are those that CStringTable makes: one spare byte per appended string at the end.
// Edits leave every byte of the header and of other entries as it is.

#include <tools/ltx/table_string.h>

#include <vector>

namespace tools::ltx {

struct ImageFault {
    static constexpr long Header = -1;
    long index; // of the entry
    std::string identifier;
    std::string text; // for people
    bool damage;      // false: it can be read and edited, but no text can carry it
};

class ImageReader {
  public:
    /// `image` must live as long as the reader. It is only read within its bytes.
    explicit ImageReader(const std::string &image);

    /// The next entry; false at the end, and where it cannot be told where the next one is.
    bool Next();

    const TableString &String() const { return string_; }
    long Index() const { return index_; }
    /// Where the entry begins, and where the next one would.
    std::size_t Place() const { return place_; }
    std::size_t Behind() const { return behind_; }

    /// As the header says, and never more than the file has room for.
    long Count() const { return count_; }

    /// What was found so far; after some dozens, no more are noted.
    const std::vector<ImageFault> &Faults() const { return faults_; }

  private:
    void Read_Header();
    void Read_Fields();
    void Read_Text();
    void Find_Behind();
    void Note(long index, const std::string &text, bool damage = true);

    const std::string &image_;
    TableString string_;
    long index_ = -1, count_ = 0;
    std::size_t place_ = 0, behind_ = 0; // 0: not known
    std::vector<ImageFault> faults_;
};

/// Those strings that Limit_Passed refuses must not be among them. Fails with 2 when the table would be
/// larger than a file that can be read again.
class ImageBuilder {
  public:
    /// For about so many strings, of so many bytes in all: only a hint.
    ImageBuilder(std::size_t strings, std::size_t bytes);
    void Append(const TableString &string);
    std::string Finish();

  private:
    std::string image_;
    long count_ = 0;
};

/// Edits of a table without damage, for an entry that the reader stands at. Append is for one that has come
/// to the end.
void Replace_Entry(std::string &image, const ImageReader &at, const TableString &string);
void Delete_Entry(std::string &image, const ImageReader &at);
void Append_Entry(std::string &image, const ImageReader &at, const TableString &string);

} // namespace tools::ltx
