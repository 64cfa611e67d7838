#include <reference_suite/components/location/ten_digit_options.h>

#include <reference_suite/components/component_store.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>

#include <atomic>
#include <cstring>
#include <memory>

struct TenDigitOptions::Saved {
    KELMARA_CLASS_ALLOCATION

    unsigned long token;
    StoredLines lines;
};

namespace {

constexpr char Changes_Mutex[] = "KelmaraTenDigitOptions";
constexpr long Patience = 2000; // milliseconds
constexpr std::size_t Longest_Code = 254;

constinit std::atomic<unsigned long> last_token{0};

unsigned long New_Token() {
    unsigned long token = ++last_token;
    while (token == 0) token = ++last_token;
    return token;
}

bool Is_Code(const char *text) {
    const std::size_t length = std::strcspn(text, ",=");
    return !text[length] && length <= Longest_Code;
}

class ChangesMutex {
  public:
    ChangesMutex() : m_Handle(CreateMutexA(nullptr, FALSE, Changes_Mutex)) {}
    ~ChangesMutex() {
        if (m_Handle) CloseHandle(m_Handle);
    }
    ChangesMutex(const ChangesMutex &) = delete;
    ChangesMutex &operator=(const ChangesMutex &) = delete;
    HANDLE Get() const { return m_Handle; }

  private:
    HANDLE m_Handle;
};

// While nobody else changes any.
template <class Step>
long Alone(Step step) {
    const ChangesMutex mutex;
    CMutexHolder lock;
    if (mutex.Get()) lock.Acquire(mutex.Get(), Patience);
    return lock.Is_Held() ? step() : ERROR_SERVICE_REQUEST_TIMEOUT;
}

} // namespace

long TenDigitOptions::Apply(const char *key, TenDigitAnswers answers, const char *area_code,
                            const char *exchange) {
    if (!Is_Code(area_code) || !Is_Code(exchange)) return E_INVALIDARG;
    const std::string name = std::string(area_code) + "," + exchange;
    const char text[] = {answers.first ? '1' : '0', answers.second ? '1' : '0', 0};
    return Alone([&]() -> long {
        StoredLines lines;
        if (const long result = lines.Load(key, Ten_Digit_Value)) return result;
        if (!answers.first && !answers.second)
            lines.Remove(name.c_str());
        else if (const long result = lines.Set(name.c_str(), text))
            return result;
        return lines.Store(key, Ten_Digit_Value);
    });
}

long TenDigitOptions::Save(const char *key, unsigned long &token) {
    std::unique_ptr<Saved> saved(new Saved{});
    if (!saved) return E_OUTOFMEMORY;
    if (const long result = saved->lines.Load(key, Ten_Digit_Value)) return result;
    saved->token = New_Token();
    if (!m_Saved.Add(saved.get(), 0)) return E_OUTOFMEMORY;
    token = saved.release()->token;
    return 0;
}

TenDigitOptions::Saved *TenDigitOptions::Find(unsigned long token) {
    CIterator walk;
    for (void *entry = walk.Iterate(&m_Saved); walk.More(); entry = walk.Next()) {
        if (static_cast<Saved *>(entry)->token == token) return static_cast<Saved *>(entry);
    }
    return nullptr;
}

long TenDigitOptions::Restore(const char *key, unsigned long token) {
    Saved *const saved = Find(token);
    if (!saved) return ERROR_NOT_FOUND;
    return Alone([&] { return saved->lines.Store(key, Ten_Digit_Value); });
}

long TenDigitOptions::Discard(unsigned long token) {
    Saved *const saved = Find(token);
    if (!saved) return ERROR_NOT_FOUND;
    m_Saved.Remove(saved, 0);
    delete saved;
    return 0;
}

void TenDigitOptions::Discard_All() {
    while (m_Saved.Entries(0) > 0) delete static_cast<Saved *>(m_Saved.Pop(0));
}
