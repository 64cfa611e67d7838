#pragma once
// The connection that all processes of the machine see, and the events that those who listen to it hold.
//
// There is one connection at a time. It lives by an event with its number in the name, which the process that
// made it holds: set, it tells that process that the connection was closed; gone, it tells everybody that the
// process has died with it. A board's calls clear such a connection away, and count it as lost. Whoever
// listens holds an event of its own by a number in the name, and is off the list once nobody has it open.
//
// What is `long` is 0 or a failing HRESULT. Any thread may call.

#include <reference_suite/companions/log/shared_objects.h>

#include <cstdint>

/// There is another connection.
inline constexpr long Connection_Busy = static_cast<long>(0x800700AAu);

enum class ConnectionStage : std::uint32_t { None, Dialling, Up };
enum class ConnectionChange : std::uint32_t { Came_Up, Went_Down };

/// Texts are terminated; of a long number its beginning is there.
struct ConnectionFacts {
    ConnectionStage stage = ConnectionStage::None;
    std::uint32_t number = 0; // of the connection; never 0 for one that is
    std::uint32_t since = 0;  // GetTickCount when the stage began
    char configuration[256] = "";
    char dialled[256] = "";
};

class ConnectionBoard {
  public:
    ConnectionBoard() = default;
    ~ConnectionBoard();
    ConnectionBoard(const ConnectionBoard &) = delete;
    ConnectionBoard &operator=(const ConnectionBoard &) = delete;

    /// Once; the others want it done.
    long Open();
    long Look(ConnectionFacts &facts);
    /// Begins dialling: the number at `number`, and the event that tells of the end at `end`. Connection_Busy
    /// when there is one, E_INVALIDARG for a configuration's name of more than 255 characters.
    long Begin(const char *configuration, const char *dialled, std::uint32_t &number, OwnedHandle &end);
    /// These two do nothing for a connection that is not there any more; false then.
    bool Come_Up(std::uint32_t number);
    bool Go_Down(std::uint32_t number);
    /// Whichever there is, and its process is told. `number` is 0 when there was none.
    long Close(std::uint32_t &number);
    /// An event that is set at such a change, reset by whoever has it: the caller's to close.
    long Listen(ConnectionChange change, OwnedHandle &event);

  private:
    struct Block;
    class Access;

    OwnedHandle m_Lock, m_Mapping;
    Block *m_Block = nullptr;
};
