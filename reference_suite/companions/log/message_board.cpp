#include <reference_suite/companions/log/message_board.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

constexpr DWORD Longest_Wait = 5000; // milliseconds

struct EventName {
    explicit EventName(std::uint32_t reader) {
        std::snprintf(text, sizeof text, "KELMARA-LOG-READER-%lu", static_cast<unsigned long>(reader));
    }
    char text[40];
};

} // namespace

long MessageBoard::Open(std::shared_ptr<MessageBoard> &board) {
    auto opened = std::make_shared<MessageBoard>();
    opened->lock_.reset(CreateMutexA(nullptr, FALSE, "KELMARA-LOG-MESSAGES-LOCK"));
    if (!opened->lock_) return static_cast<long>(GetLastError());
    opened->mapping_.reset(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              sizeof(BoardState), "KELMARA-LOG-MESSAGES-1"));
    if (!opened->mapping_) return static_cast<long>(GetLastError());
    void *view = MapViewOfFile(opened->mapping_.get(), FILE_MAP_WRITE, 0, 0, sizeof(BoardState));
    if (!view) return static_cast<long>(GetLastError());
    opened->state_ = static_cast<BoardState *>(view);
    board = std::move(opened);
    return NO_ERROR;
}

MessageBoard::~MessageBoard() {
    if (state_) UnmapViewOfFile(state_);
}

// --- with the lock held -----------------------------------------------------------------------------------

// Whatever stands in the block, what comes back can be followed.
BoardBounds MessageBoard::Bounds() const {
    BoardBounds bounds = state_->bounds[state_->current & 1];
    if (bounds.end - bounds.begin > Board_Room) bounds.begin = bounds.end;
    return bounds;
}

void MessageBoard::Switch_To(const BoardBounds &bounds) {
    const std::uint32_t other = (state_->current & 1) ^ 1;
    state_->bounds[other] = bounds;
    state_->current.store(other, std::memory_order_release);
}

bool MessageBoard::Read_Head(const BoardBounds &bounds, std::uint64_t position, MessageHead &head) const {
    if (bounds.end - position < sizeof head) return false;
    Copy_Out(position, &head, sizeof head);
    return head.size <= Longest_Message && head.size <= bounds.end - position - sizeof head;
}

void MessageBoard::Copy_In(std::uint64_t position, const void *bytes, std::uint32_t size) {
    const auto at = static_cast<std::uint32_t>(position % Board_Room);
    const std::uint32_t first = std::min(size, Board_Room - at);
    std::memcpy(state_->ring + at, bytes, first);
    std::memcpy(state_->ring, static_cast<const char *>(bytes) + first, size - first);
}

void MessageBoard::Copy_Out(std::uint64_t position, void *bytes, std::uint32_t size) const {
    const auto at = static_cast<std::uint32_t>(position % Board_Room);
    const std::uint32_t first = std::min(size, Board_Room - at);
    std::memcpy(bytes, state_->ring + at, first);
    std::memcpy(static_cast<char *>(bytes) + first, state_->ring, size - first);
}

// The old messages are given up before they are written over.
void MessageBoard::Make_Room(BoardBounds &bounds, std::uint32_t size) {
    if (Board_Room - (bounds.end - bounds.begin) >= size) return;
    for (MessageHead head; Board_Room - (bounds.end - bounds.begin) < size;) {
        if (Read_Head(bounds, bounds.begin, head))
            bounds.begin += sizeof head + head.size;
        else
            bounds.begin = bounds.end;
    }
    Switch_To(bounds);
}

bool MessageBoard::Take_Place(std::uint32_t number) {
    std::uint32_t *free_place = std::ranges::find(state_->readers, 0u);
    if (free_place == std::end(state_->readers)) return false;
    *free_place = number;
    return true;
}

void MessageBoard::Free_Place(std::uint32_t number) {
    std::ranges::replace(state_->readers, number, 0u);
}

// ----------------------------------------------------------------------------------------------------------

void MessageBoard::Post(std::uint32_t sender, std::int32_t code, const char *data, std::uint32_t size) {
    const bool whole = size <= Longest_Message;
    const std::uint32_t bytes = whole ? size : 0;
    std::uint32_t readers[Most_Readers];
    {
        const MutexLock lock(lock_, Longest_Wait);
        if (!lock) return;
        BoardBounds bounds = Bounds();
        const MessageHead head = {bounds.next_number, sender, code, bytes, whole};
        Make_Room(bounds, sizeof head + bytes);
        Copy_In(bounds.end, &head, sizeof head);
        Copy_In(bounds.end + sizeof head, data, bytes);
        bounds.end += sizeof head + bytes;
        ++bounds.next_number;
        Switch_To(bounds);
        std::ranges::copy(state_->readers, readers);
    }
    Wake(readers);
}

// Whether the machine's names cannot be had at all, each after a wait for them, or it is this one name alone.
bool Concerns_All_Names(DWORD error) {
    for (const long all :
         {ERROR_ACCESS_DENIED, ERROR_TOO_MANY_OPEN_FILES, ERROR_NOT_ENOUGH_QUOTA, ERROR_NOT_ENOUGH_MEMORY}) {
        if (error == static_cast<DWORD>(all)) return true;
    }
    return false;
}

// Readers that are not woken look for themselves, a little later.
void MessageBoard::Wake(const std::uint32_t (&readers)[Most_Readers]) {
    for (const std::uint32_t reader : readers) {
        if (reader == 0) continue;
        const OwnedHandle wake(OpenEventA(EVENT_MODIFY_STATE, FALSE, EventName(reader).text));
        if (wake) {
            SetEvent(wake.get());
            continue;
        }
        const DWORD error = GetLastError();
        if (Concerns_All_Names(error)) return;
        if (error != static_cast<DWORD>(ERROR_FILE_NOT_FOUND)) continue;
        const MutexLock lock(lock_, Longest_Wait);
        if (lock) Free_Place(reader);
    }
}

void MessageBoard::Clear_Away_Dead() {
    std::uint32_t readers[Most_Readers];
    {
        const MutexLock lock(lock_, Longest_Wait);
        if (!lock) return;
        std::ranges::copy(state_->readers, readers);
    }
    Wake(readers); // the living find nothing, and wait on
}

// The event is there before the place is taken: a reader without one counts as dead.
long MessageBoard::Begin_To_Read(BoardReader &reader) {
    {
        const MutexLock lock(lock_, Longest_Wait);
        if (!lock) return ERROR_SERVICE_REQUEST_TIMEOUT;
        do {
            reader.number = ++state_->last_reader;
        } while (reader.number == 0 ||
                 std::ranges::find(state_->readers, reader.number) != std::end(state_->readers));
    }
    reader.wake.reset(CreateEventA(nullptr, FALSE, FALSE, EventName(reader.number).text));
    if (!reader.wake) return static_cast<long>(GetLastError());
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (attempt > 0) Clear_Away_Dead();
        const MutexLock lock(lock_, Longest_Wait);
        if (!lock) return ERROR_SERVICE_REQUEST_TIMEOUT;
        if (!Take_Place(reader.number)) continue;
        const BoardBounds bounds = Bounds();
        reader.position = bounds.end;
        reader.next_number = bounds.next_number;
        return NO_ERROR;
    }
    return ERROR_TOO_MANY_OPEN_FILES;
}

void MessageBoard::Stop_Reading(BoardReader &reader) {
    const std::uint32_t number = std::exchange(reader.number, 0u);
    if (number == 0) return;
    const MutexLock lock(lock_, Longest_Wait);
    if (lock) Free_Place(number);
}

bool MessageBoard::Read_Next(BoardReader &reader, MessageHead &head, char *data, std::uint32_t &lost) {
    const MutexLock lock(lock_, Longest_Wait);
    if (!lock) return false;
    const BoardBounds bounds = Bounds();
    const bool too_slow = reader.position - bounds.begin > bounds.end - bounds.begin;
    if (too_slow) reader.position = bounds.begin;
    if (reader.position == bounds.end) return false;
    if (!Read_Head(bounds, reader.position, head)) {
        reader.position = bounds.end;
        return false;
    }
    Copy_Out(reader.position + sizeof head, data, head.size);
    reader.position += sizeof head + head.size;
    lost += head.number - reader.next_number;
    reader.next_number = head.number + 1;
    return true;
}
