#include <reference_suite/components/connection/connection_board.h>

#include <reference_suite/components/connection/connection_fate.h>

#include <platform/errors.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

constexpr DWORD Patience = 5000; // milliseconds
constexpr unsigned Most_Listeners = 250;

long Last_Code() {
    return As_Component_Code(GetLastError());
}

struct ObjectName {
    ObjectName(const char *kind, std::uint32_t number) {
        std::snprintf(text, sizeof text, "KELMARA-CONNECTION-%s-%lu", kind,
                      static_cast<unsigned long>(number));
    }
    char text[48];
};

template <std::size_t Size>
void Copy_Cut(char (&to)[Size], const char *from) {
    std::snprintf(to, Size, "%.*s", static_cast<int>(Size - 1), from); // others may have written over its end
}

OwnedHandle Open_Event(const char *kind, std::uint32_t number) {
    return OwnedHandle(OpenEventA(EVENT_ALL_ACCESS, FALSE, ObjectName(kind, number).text));
}

bool Is_Gone(const char *kind, std::uint32_t number) {
    return !Open_Event(kind, number) && GetLastError() == ERROR_FILE_NOT_FOUND;
}

} // namespace

// A holder of the lock may be killed at any store: `stage` and `number` come last where something begins, and
// first where it ends.
struct ConnectionBoard::Block {
    std::uint32_t last_number; // of connections and listeners
    std::atomic<ConnectionStage> stage;
    std::uint32_t connection, since;
    char configuration[sizeof ConnectionFacts::configuration];
    char dialled[sizeof ConnectionFacts::dialled];
    struct Place {
        std::atomic<std::uint32_t> number; // 0: nobody's
        ConnectionChange change;
    } listeners[Most_Listeners];
};

// The block under its lock. The events of those who are to hear of a change are set behind it: a process that
// is stopped in the middle of its event keeps nobody from the block.
class ConnectionBoard::Access {
  public:
    explicit Access(ConnectionBoard &board) : m_Board(board), m_Block(*board.m_Block) {
        const DWORD result = WaitForSingleObject(board.m_Lock.get(), Patience);
        m_Held = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
        if (m_Held && m_Block.stage != ConnectionStage::None && Is_Gone("END", m_Block.connection)) End();
    }
    ~Access() {
        if (!m_Held) return;
        ReleaseMutex(m_Board.m_Lock.get());
        for (unsigned i = 0; i < m_Told_Count; ++i)
            if (const OwnedHandle event = Open_Event("EVENT", m_To_Be_Told[i])) SetEvent(event.get());
    }
    Access(const Access &) = delete;
    Access &operator=(const Access &) = delete;
    explicit operator bool() const { return m_Held; }
    Block *operator->() const { return &m_Block; }

    bool Has(std::uint32_t number) const {
        return m_Held && m_Block.stage != ConnectionStage::None && m_Block.connection == number;
    }
    // Somebody may still hold one of that number, of when the block was another.
    OwnedHandle Make_Event(const char *kind, std::uint32_t &number) {
        for (int tries = 0; tries < 1000; ++tries) {
            number = ++m_Block.last_number;
            OwnedHandle event(CreateEventA(nullptr, TRUE, FALSE, ObjectName(kind, number).text));
            if (!event || (number != 0 && GetLastError() != ERROR_ALREADY_EXISTS)) return event;
        }
        return nullptr;
    }
    void Enter(ConnectionStage stage) {
        m_Block.since = GetTickCount();
        m_Block.stage = stage;
        if (stage == ConnectionStage::Up) Tell(ConnectionChange::Came_Up);
    }
    void End() {
        if (m_Block.stage.exchange(ConnectionStage::None) == ConnectionStage::Up)
            Tell(ConnectionChange::Went_Down);
    }
    Block::Place *Find_Place() {
        for (Block::Place &place : m_Block.listeners) {
            if (place.number != 0 && Is_Gone("EVENT", place.number)) place.number = 0;
            if (place.number == 0) return &place;
        }
        return nullptr;
    }

  private:
    void Tell(ConnectionChange change) {
        for (Block::Place &place : m_Block.listeners) {
            if (place.number == 0 || place.change != change) continue;
            m_To_Be_Told[m_Told_Count++] = place.number;
        }
    }

    ConnectionBoard &m_Board;
    Block &m_Block;
    bool m_Held;
    std::uint32_t m_To_Be_Told[2 * Most_Listeners]; // one connection may go and the next come up
    unsigned m_Told_Count = 0;
};

ConnectionBoard::~ConnectionBoard() {
    if (m_Block) UnmapViewOfFile(m_Block);
}

long ConnectionBoard::Open() {
    if (m_Block) return 0;
    m_Lock.reset(CreateMutexA(nullptr, FALSE, "KELMARA-CONNECTION-LOCK"));
    if (!m_Lock) return Last_Code();
    m_Mapping.reset(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Block),
                                       "KELMARA-CONNECTION-2"));
    if (!m_Mapping) return Last_Code();
    m_Block = static_cast<Block *>(MapViewOfFile(m_Mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(Block)));
    return m_Block ? 0 : Last_Code();
}

long ConnectionBoard::Look(ConnectionFacts &facts) {
    facts = {};
    const Access access(*this);
    if (!access) return E_FAIL;
    if (access->stage == ConnectionStage::None) return 0;
    facts.stage = access->stage;
    facts.number = access->connection;
    facts.since = access->since;
    Copy_Cut(facts.configuration, access->configuration);
    Copy_Cut(facts.dialled, access->dialled);
    return 0;
}

long ConnectionBoard::Begin(const char *configuration, const char *dialled, std::uint32_t &number,
                            OwnedHandle &end) {
    if (std::strlen(configuration) >= sizeof ConnectionFacts::configuration) return E_INVALIDARG;
    Access access(*this);
    if (!access) return E_FAIL;
    if (access->stage != ConnectionStage::None) return Connection_Busy;
    end = access.Make_Event("END", number);
    if (!end) return Last_Code();
    access->connection = number;
    Copy_Cut(access->configuration, configuration);
    Copy_Cut(access->dialled, dialled);
    access.Enter(ConnectionStage::Dialling);
    return 0;
}

bool ConnectionBoard::Come_Up(std::uint32_t number) {
    Access access(*this);
    if (!access.Has(number)) return false;
    access.Enter(ConnectionStage::Up);
    return true;
}

bool ConnectionBoard::Go_Down(std::uint32_t number) {
    Access access(*this);
    if (!access.Has(number)) return false;
    access.End();
    return true;
}

long ConnectionBoard::Close(std::uint32_t &number) {
    number = 0;
    Access access(*this);
    if (!access) return E_FAIL;
    if (access->stage == ConnectionStage::None) return 0;
    const OwnedHandle end = Open_Event("END", access->connection);
    if (!end && GetLastError() != ERROR_FILE_NOT_FOUND) return Last_Code();
    if (end) SetEvent(end.get()); // first: who is killed in between leaves a keeper that knows
    number = access->connection;
    access.End();
    return 0;
}

long ConnectionBoard::Listen(ConnectionChange change, OwnedHandle &event) {
    Access access(*this);
    if (!access) return E_FAIL;
    Block::Place *const place = access.Find_Place();
    if (!place) return As_Component_Code(ERROR_NOT_ENOUGH_QUOTA);
    std::uint32_t number = 0;
    event = access.Make_Event("EVENT", number);
    if (!event) return Last_Code();
    place->change = change;
    place->number = number;
    return 0;
}
