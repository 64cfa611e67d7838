#pragma once
// The server's end of one connection: a request is read, and no other until its answer is written. Belongs to
// the endpoint's thread.

#include <platform/com/wire.h>
#include <platform/kernel/file_descriptor.h>

#include <atomic>
#include <memory>
#include <poll.h>
#include <vector>

/// What the endpoint's thread and the thread that makes the calls tell each other about one connection. Of
/// the answer each has the use in turn.
struct Exchange {
    std::atomic<bool> answered{false}; // the endpoint's turn
    std::atomic<bool> ended{false};    // nobody waits for an answer any more
    Frame answer;
};

class ServerConnection {
  public:
    /// `class_cookie` says which class it was made to. May throw std::bad_alloc.
    ServerConnection(std::uint32_t class_cookie, FileDescriptor socket);
    ~ServerConnection() { exchange_->ended.store(true, std::memory_order_release); }
    ServerConnection(const ServerConnection &) = delete;
    ServerConnection &operator=(const ServerConnection &) = delete;

    std::uint32_t Class_Cookie() const { return class_cookie_; }
    const std::shared_ptr<Exchange> &Link() const { return exchange_; }

    /// What is to be waited for: the socket and the client's process.
    static constexpr std::size_t Polled = 2;
    void Add_To(std::vector<pollfd> &waiting) const;

    enum class News { None, Request, Ended };
    /// By what the host told of those two. May throw std::bad_alloc.
    News Look(const pollfd *told);
    Frame Take_Request() { return reader_.Take(); }
    /// Begins to write an answer that has come. May throw std::bad_alloc.
    News Pass_Answer_On();
    /// There is more of an answer than the client has taken yet; Write goes on with it.
    bool Is_Writing() const { return step_ == Step::Writing; }
    News Write();

    /// It keeps a request half sent, or has never sent one: not for longer than Patience, in milliseconds.
    static constexpr DWORD Patience = 10000;
    bool Is_Dawdling() const { return step_ == Step::Reading && (is_new_ || reader_.Has_Begun()); }
    bool Has_Dawdled_Too_Long() const;

  private:
    enum class Step { Reading, Working, Writing };
    News Read();

    const std::uint32_t class_cookie_;
    const std::shared_ptr<Exchange> exchange_;
    FileDescriptor socket_, process_;
    Step step_ = Step::Reading;
    FrameReader reader_{FrameDirection::Request};
    FrameWriter writer_;
    bool is_new_ = true;
    DWORD dawdles_since_;
};
