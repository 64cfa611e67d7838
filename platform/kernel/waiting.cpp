#include <platform/kernel/waiting.h>

#include <platform/kernel.h>

namespace {

constexpr long long Look_Milliseconds = 2;

// What one wait has at its objects, in their order.
class Stay {
  public:
    explicit Stay(std::span<KernelObject *const> objects) : objects_(objects) {}
    DWORD Look();
    void Sleep(const SleepWord *further, long long milliseconds) const;
    /// To be called once, with what the last look gave. What came to other objects meanwhile is passed on;
    /// but a wait that would end with nothing takes it.
    DWORD Leave(DWORD result);

  private:
    std::span<KernelObject *const> objects_;
    WaitSpot spots_[Most_Waited_For];
    std::size_t taken_ = Most_Waited_For;
};

DWORD Stay::Look() {
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        const DWORD result = objects_[i]->Look(spots_[i]);
        if (result == WAIT_TIMEOUT) continue;
        if (result == WAIT_FAILED) return WAIT_FAILED;
        taken_ = i;
        return result + static_cast<DWORD>(i);
    }
    return WAIT_TIMEOUT;
}

void Stay::Sleep(const SleepWord *further, long long milliseconds) const {
    SleepWord words[Most_Sleep_Words];
    unsigned count = 0;
    milliseconds = std::min(milliseconds, Round_Milliseconds);
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        if (spots_[i].sleep.word)
            words[count++] = spots_[i].sleep;
        else
            milliseconds = std::min(milliseconds, Look_Milliseconds);
    }
    if (further) words[count++] = *further;
    if (count)
        Sleep_On(words, count, milliseconds);
    else
        ::Sleep(static_cast<DWORD>(milliseconds));
}

DWORD Stay::Leave(DWORD result) {
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        if (i == taken_) continue;
        const bool wanted = result == WAIT_TIMEOUT;
        const DWORD last = objects_[i]->Leave(spots_[i], wanted);
        if (wanted && last != WAIT_TIMEOUT) result = last + static_cast<DWORD>(i);
    }
    return result;
}

} // namespace

DWORD Try_First(std::span<KernelObject *const> objects) {
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const DWORD result = objects[i]->Try();
        if (result == WAIT_FAILED) return WAIT_FAILED;
        if (result != WAIT_TIMEOUT) return result + static_cast<DWORD>(i);
    }
    return WAIT_TIMEOUT;
}

DWORD Wait_For_First(std::span<KernelObject *const> objects, const Deadline &deadline,
                     const SleepWord *further) {
    const DWORD at_once = Try_First(objects);
    if (at_once != WAIT_TIMEOUT || deadline.Left() == 0) return at_once;
    Stay stay(objects);
    for (;;) {
        const DWORD result = stay.Look();
        const long long left = deadline.Left();
        if (result != WAIT_TIMEOUT || left == 0 || (further && further->Has_Moved()))
            return stay.Leave(result);
        stay.Sleep(further, left);
    }
}

WaitedFor::WaitedFor(DWORD count, const HANDLE *handles) {
    for (; count_ < count && all_there_; ++count_) {
        const HandleUse &use = uses_[count_].emplace(handles[count_]);
        all_there_ = static_cast<bool>(use);
        objects_[count_] = all_there_ ? &use.Object() : nullptr;
    }
}

DWORD Wait_By_Kind(HANDLE handle, DWORD milliseconds) {
    const HandleUse use(handle);
    if (use) return use.Object().Wait(milliseconds);
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}

DWORD KernelObject::Wait(DWORD milliseconds) {
    KernelObject *const only = this;
    return Wait_For_First({&only, 1}, Deadline(milliseconds));
}

DWORD KernelObject::Try() {
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}
