#pragma once
// Fields for the template engine from a section file: a section is a binding table, by its name of four
// characters, and its items are the fields, by theirs. A shorter name stands for one with blanks behind it.
// The first section, whatever its name, also has the fields that & tokens ask for.

#include <kelmara/content/tokenizer.h>

#include <list>
#include <map>
#include <string>

namespace tools {

/// A binding host; the references that it counts keep nothing alive.
class FieldSection final : public IBindingHostInterface {
  public:
    long QueryInterface(const GUID &iid, void **object) override;
    unsigned long AddRef() override { return ++references_; }
    unsigned long Release() override { return --references_; }
    /// ERROR_NOT_FOUND for a field that is not there, ERROR_MORE_DATA for one that does not fit.
    long Get_Field_Value(long field, char *buffer, long size) override;

    /// Of two of one name the first stays. Letter case does not count.
    void Add(const std::string &name, const std::string &value);

  private:
    std::map<std::string, std::string> fields_;
    unsigned long references_ = 0;
};

class TemplateFields {
  public:
    /// Fails with 2 for a section file that cannot be read, naming the line.
    explicit TemplateFields(const std::string &file);

    /// The tokenizer must go before this object.
    void Give_To(CTokenizer &tokenizer);

  private:
    struct Table {
        std::string name;
        FieldSection fields;
    };
    std::list<Table> tables_; // that stay where they are
};

} // namespace tools
