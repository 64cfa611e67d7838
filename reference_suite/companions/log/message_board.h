#pragma once
// The messages that wait on a machine, and who is to be woken for them: one shared block.
//
// Messages lie one behind another in a ring; a new one takes the place of the oldest. Readers have a cursor
// each and take nothing away, so a slow one holds up nobody. Every access is under a named lock. What counts
// is one of two sets of bounds, and the last store of each change switches to the other: a process killed at
// any moment leaves the messages as they were or as they were to be, and the lock's next holder has nothing
// to mend. A zero-filled block is an empty board.
//
// A reader's place on the board is the number of a named event, which the machine forgets with the reader's
// process: that tells the dead. Any thread may call anything; a cursor is one thread's.

#include <reference_suite/companions/log/shared_objects.h>

#include <atomic>
#include <cstdint>

inline constexpr std::uint32_t Longest_Message = 65536; // bytes
inline constexpr std::uint32_t Board_Room = 262144;     // bytes of messages, with a head each
inline constexpr int Most_Readers = 64;

/// In front of each message. Layout frozen, as is that of BoardState, for the name that the block has.
struct MessageHead {
    std::uint32_t number; // offset 0, one more than that of the message before
    std::uint32_t sender; // offset 4, a process
    std::int32_t code;    // offset 8
    std::uint32_t size;   // offset 12, bytes that follow
    std::uint32_t whole;  // offset 16, 0 for a message that was too long: nothing follows
};
static_assert(sizeof(MessageHead) == 20 && offsetof(MessageHead, whole) == 16);

struct BoardBounds {
    std::uint64_t begin; // of the oldest message; positions count on and lie in the ring by their remainder
    std::uint64_t end;   // of the newest
    std::uint32_t next_number;
    std::uint32_t unused;
};

struct BoardState {
    std::atomic<std::uint32_t> current;  // offset 0, which bounds count
    std::uint32_t last_reader;           // offset 4
    BoardBounds bounds[2];               // offset 8
    std::uint32_t readers[Most_Readers]; // offset 56, 0 is a free place
    char ring[Board_Room];               // offset 312
};
static_assert(offsetof(BoardState, bounds) == 8 && offsetof(BoardState, readers) == 56);
static_assert(offsetof(BoardState, ring) == 312 && sizeof(BoardState) == 312 + Board_Room);

/// A reader's place and how far it has read.
struct BoardReader {
    std::uint32_t number = 0;
    OwnedHandle wake; // set when there may be something to read
    std::uint64_t position = 0;
    std::uint32_t next_number = 0;
};

class MessageBoard {
  public:
    /// A code of platform/errors.h when the shared parts are not to be had.
    static long Open(std::shared_ptr<MessageBoard> &board);
    ~MessageBoard();

    /// For all that read from now on, whom it wakes. A message that is too long leaves a head alone. Lost
    /// when the lock is not to be had within seconds.
    void Post(std::uint32_t sender, std::int32_t code, const char *data, std::uint32_t size);

    /// ERROR_TOO_MANY_OPEN_FILES when all places are taken by living readers.
    long Begin_To_Read(BoardReader &reader);
    /// The reader has no number afterwards; one that has none is left alone.
    void Stop_Reading(BoardReader &reader);

    /// The next message; its bytes go to `data`, which has room for the longest. False when there is none.
    /// `lost` grows by those that the reader was too slow for.
    bool Read_Next(BoardReader &reader, MessageHead &head, char *data, std::uint32_t &lost);

    void Clear_Away_Dead();

  private:
    BoardBounds Bounds() const;
    void Switch_To(const BoardBounds &bounds);
    bool Read_Head(const BoardBounds &bounds, std::uint64_t position, MessageHead &head) const;
    void Copy_In(std::uint64_t position, const void *bytes, std::uint32_t size);
    void Copy_Out(std::uint64_t position, void *bytes, std::uint32_t size) const;
    void Make_Room(BoardBounds &bounds, std::uint32_t size);
    void Wake(const std::uint32_t (&readers)[Most_Readers]);
    bool Take_Place(std::uint32_t number);
    void Free_Place(std::uint32_t number);

    OwnedHandle lock_, mapping_;
    BoardState *state_ = nullptr;
};
