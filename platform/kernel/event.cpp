// Events: a word in a block that the processes of the machine share, and places for those who wait.
//
// Whoever waits has a place in the block, with its turn and a word to sleep on, and keeps the place's robust
// lock while it waits: so whoever sets the event finds out which of them still live, and gives the release of
// an event that is not manual to the first that does. All but the sleeping happens under the event's own
// robust lock, each change one store, so that a killed holder leaves nothing half done. A thread may be
// killed between a release and the call that wakes the released one: sleepers look again every second.

#include <platform/kernel/named_objects.h>
#include <platform/kernel/waiting.h>

#include <atomic>
#include <cerrno>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr unsigned Most_Places = 100; // all that a page holds; more waiters look for themselves every while
constexpr long Round_Milliseconds = 1000, Look_Milliseconds = 2;

struct Place {
    pthread_mutex_t presence; // held by who waits here
    std::uint32_t turn;       // 0: nobody waits here
    std::atomic<std::uint32_t> released;
};

struct EventState {
    pthread_mutex_t lock; // of all that follows
    std::uint32_t manual;
    std::uint32_t set;
    std::uint32_t last_turn;
    Place places[Most_Places];
};
static_assert(sizeof(EventState) <= 4096);

void Make_Lock(pthread_mutex_t &lock) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&lock, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

template <bool Manual, bool Set>
void Prepare(void *contents) {
    auto &state = *static_cast<EventState *>(contents);
    Make_Lock(state.lock);
    for (Place &place : state.places) Make_Lock(place.presence);
    state.manual = Manual;
    state.set = Set;
}

// True when the caller has the lock now, after a holder that ended as well.
bool Owns_After(int locked, pthread_mutex_t &lock) {
    if (locked == EOWNERDEAD) return pthread_mutex_consistent(&lock) == 0;
    return locked == 0;
}

class StateLock {
  public:
    explicit StateLock(EventState &state) : lock_(state.lock) {
        Owns_After(pthread_mutex_lock(&lock_), lock_);
    }
    ~StateLock() { pthread_mutex_unlock(&lock_); }
    StateLock(const StateLock &) = delete;
    StateLock &operator=(const StateLock &) = delete;

  private:
    pthread_mutex_t &lock_;
};

// Returns early for any reason of the host's.
void Sleep_On(std::atomic<std::uint32_t> &word, long milliseconds) {
    struct {
        long seconds, nanoseconds; // the host's old form, which this call has at this word size
    } limit = {milliseconds / 1000, milliseconds % 1000 * 1000000};
    syscall(SYS_futex, &word, FUTEX_WAIT, 0, &limit, nullptr, 0);
}

void Wake_On(std::atomic<std::uint32_t> &word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

// --- with the state's lock held ---------------------------------------------------------------------------

bool Take_If_Set(EventState &state) {
    if (!state.set) return false;
    if (!state.manual) state.set = 0;
    return true;
}

std::uint32_t Next_Turn(EventState &state) {
    if (++state.last_turn == 0) ++state.last_turn;
    return state.last_turn;
}

// A place whose lock is the caller's from then on; null when all are taken.
Place *Find_Place(EventState &state) {
    for (Place &place : state.places) {
        if (!Owns_After(pthread_mutex_trylock(&place.presence), place.presence)) continue;
        place.released.store(0, std::memory_order_relaxed);
        place.turn = Next_Turn(state);
        return &place;
    }
    return nullptr;
}

// Whether somebody waits there who is not released yet. What a dead one left is cleared away.
bool Has_Waiter(Place &place) {
    if (place.turn == 0 || place.released.load(std::memory_order_relaxed)) return false;
    if (!Owns_After(pthread_mutex_trylock(&place.presence), place.presence)) return true;
    place.turn = 0;
    pthread_mutex_unlock(&place.presence);
    return false;
}

void Release(Place &place) {
    place.released.store(1, std::memory_order_release);
    Wake_On(place.released);
}

void Release_All(EventState &state) {
    for (Place &place : state.places) {
        if (Has_Waiter(place)) Release(place);
    }
}

// False when nobody waits. Turns are numbers that wrap.
bool Release_First(EventState &state) {
    Place *first = nullptr;
    for (Place &place : state.places) {
        if (!Has_Waiter(place)) continue;
        if (!first || static_cast<std::int32_t>(place.turn - first->turn) < 0) first = &place;
    }
    if (first) Release(*first);
    return first != nullptr;
}

// ----------------------------------------------------------------------------------------------------------

class EventObject final : public NamedObject {
  public:
    explicit EventObject(std::unique_ptr<SharedBlock> block)
        : NamedObject(ObjectKind::Event),
          block_(std::move(block)),
          state_(*static_cast<EventState *>(block_->Contents())) {}

    DWORD Wait(DWORD milliseconds) override;
    void Set();
    void Reset();

    static NamedObject *Make(std::unique_ptr<SharedBlock> block) {
        if (block->Size() < sizeof(EventState) || !block->Contents()) return nullptr;
        return new EventObject(std::move(block));
    }

  private:
    ~EventObject() override = default;
    bool Wait_In(Place &place, const Deadline &deadline);
    void Let_Name_Go() override { block_->Let_Name_Go_If_Last(SharedBlock::Patience::Give_Up); }
    void Last_Released() override {
        Forget_Name();
        delete this;
    }

    std::unique_ptr<SharedBlock> block_;
    EventState &state_;
};

DWORD EventObject::Wait(DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (;;) {
        Place *place = nullptr;
        {
            const StateLock lock(state_);
            if (Take_If_Set(state_)) return WAIT_OBJECT_0;
            if (deadline.Left() == 0) return WAIT_TIMEOUT;
            place = Find_Place(state_);
        }
        if (place) return Wait_In(*place, deadline) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
        ::Sleep(Look_Milliseconds);
    }
}

bool EventObject::Wait_In(Place &place, const Deadline &deadline) {
    while (!place.released.load(std::memory_order_acquire)) {
        const long long left = deadline.Left();
        if (left == 0) break;
        Sleep_On(place.released, static_cast<long>(std::min<long long>(left, Round_Milliseconds)));
    }
    const StateLock lock(state_);
    const bool released = place.released.load(std::memory_order_relaxed);
    place.turn = 0;
    pthread_mutex_unlock(&place.presence);
    return released;
}

void EventObject::Set() {
    const StateLock lock(state_);
    if (state_.set) return;
    if (state_.manual) {
        Release_All(state_); // first: whoever is killed in between leaves an event that is not set
        state_.set = 1;
    } else if (!Release_First(state_)) {
        state_.set = 1;
    }
}

void EventObject::Reset() {
    const StateLock lock(state_);
    state_.set = 0;
}

HANDLE Open(LPCSTR name, SharedBlockMaking making) {
    bool fresh = false;
    return NamedObjects::Open(ObjectKind::Event, SharedBlockKind::Event, name, sizeof(EventState), making,
                              EventObject::Make, &fresh);
}

BOOL Apply(HANDLE event, void (EventObject::*change)()) {
    const HandleUse use(event, ObjectKind::Event);
    if (use) {
        (use.As<EventObject>().*change)();
        return TRUE;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

} // namespace

extern "C" {

HANDLE CreateEventA(const SECURITY_ATTRIBUTES *, BOOL manual, BOOL initial, LPCSTR name) {
    if (manual) return Open(name, {initial ? Prepare<true, true> : Prepare<true, false>});
    return Open(name, {initial ? Prepare<false, true> : Prepare<false, false>});
}

HANDLE OpenEventA(DWORD, BOOL, LPCSTR name) {
    const DWORD last_error = GetLastError();
    if (!name || !*name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HANDLE event = Open(name, {.existing_only = true});
    if (event) SetLastError(last_error);
    return event;
}

BOOL SetEvent(HANDLE event) {
    return Apply(event, &EventObject::Set);
}

BOOL ResetEvent(HANDLE event) {
    return Apply(event, &EventObject::Reset);
}
}
