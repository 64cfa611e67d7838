#pragma once
// What client and server of a class say to each other on a socket of the host: a frame of request, a frame of
// answer, in turn. A connection is one object: Create makes it, and its end lets it go.
//
// Nothing that comes is trusted: a frame of another shape, or with more bytes than a message may have, ends
// its connection.

#include <platform/com_marshalling.h>

#include <string>

enum class FrameKind : std::uint32_t {
    Create = 1, // an object of the class, by an interface
    Query,      // another interface of the object
    Call,
    Answer,
};

/// In front of each frame, in the machine's own byte order. The layout is frozen for a given magic.
struct FrameHeader {
    static constexpr std::uint32_t Magic = 0x314D4B43; // "CKM1"

    std::uint32_t magic = Magic; // offset 0
    FrameKind kind = {};         // offset 4
    GUID iid = {};               // offset 8, of requests
    std::uint32_t method = 0;    // offset 24, of Call: the slot
    std::int32_t result = 0;     // offset 28, of Answer
    std::uint32_t size = 0;      // offset 32, of the bytes that follow
};
static_assert(sizeof(FrameHeader) == 36 && offsetof(FrameHeader, size) == 32);

struct Frame {
    FrameHeader header;
    std::string body;
};

enum class Passage { Under_Way, Done, Ended };
enum class FrameDirection { Request, Answer };

/// Takes a frame from a socket, as much as is there at a time.
class FrameReader {
  public:
    explicit FrameReader(FrameDirection expected) : expected_(expected) {}
    /// Ended: by the other side, or by what it said. May throw std::bad_alloc.
    Passage Read(int socket);
    /// After Done: the frame, and the next may come.
    Frame Take();
    bool Has_Begun() const { return header_bytes_ != 0; }

  private:
    bool Is_Acceptable() const;

    const FrameDirection expected_;
    Frame frame_;
    std::size_t header_bytes_ = 0;
};

class FrameWriter {
  public:
    void Begin(const Frame &frame);
    Passage Write(int socket);

  private:
    std::string bytes_;
    std::size_t written_ = 0;
};
