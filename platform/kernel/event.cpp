// Events: a word in a block that the processes of the machine share, and places for those who wait.
//
// Whoever waits has a place in the block, with its turn and a word to sleep on, and keeps the place's robust
// lock while it waits: so whoever sets the event finds out which of them still live, and gives the release of
// an event that is not manual to the first that does. A wait for several objects may be released by more than
// one of them, or be over for another reason; what it does not take it sets again, for the next in line.
//
// Places are taken, and their waiters released, under the event's own robust lock, and while an automatic
// event is set nobody has a place, but for a moment; each change is one store, so that a killed holder leaves
// nothing half done. A stopped holder holds up nobody beyond a limit: to take the event, to leave a place and
// to reset is one step each without the lock, who wants a place looks for itself until the lock is free, and
// who sets waits for it a second. A thread may be killed or stopped anywhere between a release and the call
// that wakes the released one: sleepers look again every second. A waiter that is killed after its release
// leaves a place that says so, and the next to look has the release.

#include <platform/kernel/named_objects.h>
#include <platform/kernel/robust_lock.h>
#include <platform/kernel/waiting.h>

#include <pthread.h>

namespace {

constexpr unsigned Most_Places = 100; // all that a page holds; more waiters look for themselves every while
constexpr DWORD Patience_To_Set = 1000, Patience_To_Wait = 2; // milliseconds

enum : std::uint32_t { Waiting, Released, Given_Up };

struct Place {
    pthread_mutex_t presence;        // held by who waits here
    std::atomic<std::uint32_t> turn; // 0: nobody waits here
    std::atomic<std::uint32_t> stage;
    std::atomic<std::uint32_t> resets; // the event's when the place was released
};

struct EventState {
    pthread_mutex_t lock; // of what follows, but whoever takes or resets the event just clears `set`
    std::uint32_t manual;
    std::atomic<std::uint32_t> set;
    std::uint32_t last_turn;
    std::atomic<std::uint32_t> resets;
    Place places[Most_Places];
};
static_assert(sizeof(EventState) <= 4096);

template <bool Manual, bool Set>
void Prepare(void *contents) {
    auto &state = *static_cast<EventState *>(contents);
    Make_Robust_Lock(state.lock);
    for (Place &place : state.places) Make_Robust_Lock(place.presence);
    state.manual = Manual;
    state.set = Set;
}

class StateLock {
  public:
    StateLock(EventState &state, DWORD milliseconds) : lock_(state.lock) {
        const timespec limit = Time_After(milliseconds);
        held_ = Owns_After(pthread_mutex_clocklock(&lock_, CLOCK_MONOTONIC, &limit), lock_);
    }
    ~StateLock() {
        if (held_) pthread_mutex_unlock(&lock_);
    }
    StateLock(const StateLock &) = delete;
    StateLock &operator=(const StateLock &) = delete;
    explicit operator bool() const { return held_; }

  private:
    pthread_mutex_t &lock_;
    bool held_;
};

bool Take_If_Set(EventState &state) {
    if (state.manual) return state.set.load(std::memory_order_acquire) != 0;
    std::uint32_t set = 1;
    return state.set.compare_exchange_strong(set, 0);
}

// A write all the same: who takes the event next sees what was done before this.
bool Is_Set_Already(EventState &state) {
    std::uint32_t set = 1;
    return state.set.compare_exchange_strong(set, 1);
}

// --- with the state's lock held ---------------------------------------------------------------------------

std::uint32_t Next_Turn(EventState &state) {
    if (++state.last_turn == 0) ++state.last_turn;
    return state.last_turn;
}

// Whoever waited there died with a release that it had not taken; the place's lock is the caller's.
bool Is_Release_Left(const Place &place) {
    return place.turn != 0 && place.stage.load(std::memory_order_relaxed) == Released;
}

// A place whose lock is the caller's from then on; null when all are taken.
Place *Find_Place(EventState &state) {
    for (Place &place : state.places) {
        if (!Owns_After(pthread_mutex_trylock(&place.presence), place.presence)) continue;
        if (Is_Release_Left(place)) {
            pthread_mutex_unlock(&place.presence);
            continue;
        }
        place.stage.store(Waiting, std::memory_order_relaxed);
        place.turn = Next_Turn(state);
        return &place;
    }
    return nullptr;
}

// Whether somebody waits there who is not released yet. What a dead one left is cleared away.
bool Has_Waiter(Place &place) {
    if (place.turn == 0 || place.stage.load(std::memory_order_relaxed) != Waiting) return false;
    if (!Owns_After(pthread_mutex_trylock(&place.presence), place.presence)) return true;
    place.turn = 0;
    pthread_mutex_unlock(&place.presence);
    return false;
}

// False when the waiter's time was over first.
bool Release(EventState &state, Place &place) {
    std::uint32_t stage = Waiting;
    place.resets = state.resets.load();
    if (!place.stage.compare_exchange_strong(stage, Released)) return false;
    Wake_One(place.stage);
    return true;
}

void Release_All(EventState &state) {
    for (Place &place : state.places) {
        if (Has_Waiter(place)) Release(state, place);
    }
}

// Null when nobody waits. Turns are numbers that wrap.
Place *Find_First(EventState &state) {
    Place *first = nullptr;
    for (Place &place : state.places) {
        if (!Has_Waiter(place)) continue;
        if (!first || static_cast<std::int32_t>(place.turn - first->turn) < 0) first = &place;
    }
    return first;
}

bool Release_First(EventState &state) {
    while (Place *first = Find_First(state)) {
        if (Release(state, *first)) return true;
    }
    return false;
}

// Of waiters who died before they could take them.
void Take_Releases_Back(EventState &state) {
    bool left = false;
    for (Place &place : state.places) {
        if (!Is_Release_Left(place)) continue;
        if (!Owns_After(pthread_mutex_trylock(&place.presence), place.presence)) continue;
        left = left || (Is_Release_Left(place) && place.resets == state.resets);
        place.turn = 0;
        pthread_mutex_unlock(&place.presence);
    }
    if (left && !state.manual && !Is_Set_Already(state) && !Release_First(state)) state.set = 1;
}

// ----------------------------------------------------------------------------------------------------------

class EventObject final : public NamedObject {
  public:
    explicit EventObject(std::unique_ptr<SharedBlock> block)
        : NamedObject(ObjectKind::Event),
          block_(std::move(block)),
          state_(*static_cast<EventState *>(block_->Contents())) {}

    DWORD Try() override { return Take_If_Set(state_) ? WAIT_OBJECT_0 : WAIT_TIMEOUT; }
    DWORD Look(WaitSpot &spot) override;
    DWORD Leave(WaitSpot &spot, bool wanted) override;
    /// False when the lock is not to be had in time; nothing has changed.
    bool Set();
    void Reset() {
        ++state_.resets;
        state_.set = 0;
    }

    static NamedObject *Make(std::unique_ptr<SharedBlock> block) {
        if (block->Size() < sizeof(EventState) || !block->Contents()) return nullptr;
        return new EventObject(std::move(block));
    }

  private:
    ~EventObject() override = default;
    bool Give_Up(Place &place);
    void Pass_On(std::uint32_t resets);
    void Let_Name_Go() override { block_->Let_Name_Go_If_Last(SharedBlock::Patience::Give_Up); }
    void Last_Released() override {
        Forget_Name();
        delete this;
    }

    std::unique_ptr<SharedBlock> block_;
    EventState &state_;
};

DWORD EventObject::Look(WaitSpot &spot) {
    if (auto *place = static_cast<Place *>(spot.place)) {
        const bool set = Take_If_Set(state_);
        if (!set && place->stage.load(std::memory_order_acquire) == Waiting) {
            if (const StateLock lock(state_, Patience_To_Wait); lock) Take_Releases_Back(state_);
            if (place->stage.load(std::memory_order_acquire) == Waiting) return WAIT_TIMEOUT;
        }
        const std::uint32_t resets = place->resets;
        if (Give_Up(*place) && set) Pass_On(resets);
        return WAIT_OBJECT_0;
    }
    if (Take_If_Set(state_)) return WAIT_OBJECT_0;
    const StateLock lock(state_, Patience_To_Wait);
    if (!lock) return WAIT_TIMEOUT;
    Take_Releases_Back(state_);
    if (Take_If_Set(state_)) return WAIT_OBJECT_0;
    Place *const place = Find_Place(state_);
    if (!place) return WAIT_TIMEOUT;
    spot = {{&place->stage, Waiting}, place};
    return WAIT_TIMEOUT;
}

DWORD EventObject::Leave(WaitSpot &spot, bool wanted) {
    auto *place = static_cast<Place *>(spot.place);
    const std::uint32_t resets = place ? place->resets.load() : 0;
    const bool released = place && Give_Up(*place);
    if (wanted && (released || Take_If_Set(state_))) return WAIT_OBJECT_0;
    if (released) Pass_On(resets);
    return WAIT_TIMEOUT;
}

// Whether the release came first.
bool EventObject::Give_Up(Place &place) {
    std::uint32_t stage = Waiting;
    const bool released = !place.stage.compare_exchange_strong(stage, Given_Up);
    place.turn = 0;
    pthread_mutex_unlock(&place.presence);
    return released;
}

// A release that was not needed, unless the event was reset behind it. Who waits sees within a round what is
// set without the lock.
void EventObject::Pass_On(std::uint32_t resets) {
    if (!state_.manual && resets == state_.resets && !Set()) state_.set = 1;
}

// A manual event is set before the releases: whoever is released finds it set, and whoever is not, because
// this thread is killed in between, sees it when it looks.
bool EventObject::Set() {
    if (!state_.manual && Is_Set_Already(state_)) return true;
    const StateLock lock(state_, Patience_To_Set);
    if (!lock) return false;
    if (state_.manual) {
        state_.set = 1;
        Release_All(state_);
    } else {
        Take_Releases_Back(state_);
        if (!Is_Set_Already(state_) && !Release_First(state_)) state_.set = 1;
    }
    return true;
}

HANDLE Open(LPCSTR name, SharedBlockMaking making) {
    bool fresh = false;
    return NamedObjects::Open(ObjectKind::Event, SharedBlockKind::Event, name, sizeof(EventState), making,
                              EventObject::Make, &fresh);
}

BOOL Fail(long error) {
    SetLastError(error);
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
    const HandleUse use(event, ObjectKind::Event);
    if (!use) return Fail(ERROR_INVALID_HANDLE);
    return use.As<EventObject>().Set() ? TRUE : Fail(ERROR_SERVICE_REQUEST_TIMEOUT);
}

BOOL ResetEvent(HANDLE event) {
    const HandleUse use(event, ObjectKind::Event);
    if (!use) return Fail(ERROR_INVALID_HANDLE);
    use.As<EventObject>().Reset();
    return TRUE;
}
}
