#pragma once
// How numbers of an area code and exchange are dialled with ten digits: two answers for each, kept in one
// value of the location's key. A pair without an entry has two times no. They are not a part of the
// location's other options and need no edit lock: each change is stored at once, whole, after those of
// others. Saved options are the object's own. What is `long` is 0 on success; what may throw for want of
// memory leaves everything as it was.

#include <reference_suite/components/stored_lines.h>

#include <kelmara/containers/list.h>

struct TenDigitAnswers {
    bool first, second;
};

class TenDigitOptions {
  public:
    TenDigitOptions() = default;
    ~TenDigitOptions() { Discard_All(); }
    TenDigitOptions(const TenDigitOptions &) = delete;
    TenDigitOptions &operator=(const TenDigitOptions &) = delete;

    /// E_INVALIDARG for a code with "," or "=" and for more than 254 characters;
    /// ERROR_SERVICE_REQUEST_TIMEOUT when others keep the options for two seconds.
    long Apply(const char *key, TenDigitAnswers answers, const char *area_code, const char *exchange);
    /// All of the location's, under a token that is not 0 and that no other object of the module has.
    long Save(const char *key, unsigned long &token);
    /// The state stays saved. ERROR_NOT_FOUND for a token that is none.
    long Restore(const char *key, unsigned long token);
    long Discard(unsigned long token);
    void Discard_All();

  private:
    struct Saved;
    Saved *Find(unsigned long token);

    CDSList m_Saved; // Saved, owned
};
