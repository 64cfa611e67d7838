#pragma once
// What takes the connections of a server's clients: a thread of its own that reads and writes for all of them
// and never waits for one, so that no client holds up another. It calls nothing of the program's: requests go
// to the receiver, answers come from there.

#include <platform/com/class_list.h>
#include <platform/com/server_connection.h>

#include <list>
#include <map>
#include <mutex>
#include <thread>

/// What a client asks, to be answered in `exchange`.
struct Request {
    std::shared_ptr<Exchange> exchange;
    std::uint32_t class_cookie;
    Frame frame;
};

class ServerEndpoint {
  public:
    static constexpr std::size_t Most_Connections = 256; // more are turned away
    static constexpr DWORD Last_Patience = 1000;         // milliseconds

    /// Is told by the endpoint's thread.
    class Receiver {
      public:
        /// May throw std::bad_alloc: the connection ends.
        virtual void Take(Request request) = 0;
        /// The exchanges of some connections say that they have ended.
        virtual void Some_Have_Ended() noexcept = 0;

      protected:
        ~Receiver() = default;
    };

    /// Null when the host has no more threads or descriptors. May throw std::bad_alloc.
    static std::unique_ptr<ServerEndpoint> Start(Receiver &receiver);
    /// Withdraws what is still listed, then ends all connections. Answers that were given before are still
    /// sent, where their clients take them within Last_Patience.
    ~ServerEndpoint();
    ServerEndpoint(const ServerEndpoint &) = delete;
    ServerEndpoint &operator=(const ServerEndpoint &) = delete;

    /// Takes connections to the class from now on, until Stop_Listening. May throw std::bad_alloc.
    void Listen(std::uint32_t class_cookie, std::shared_ptr<ListedClass> listed);
    void Stop_Listening(std::uint32_t class_cookie);
    /// The answer in `exchange` is complete.
    void Pass_On(Exchange &exchange);

  private:
    explicit ServerEndpoint(Receiver &receiver);
    void Run();
    void Pass_Last_Answers_On();
    bool Is_Ending();
    void List_What_To_Wait_For();
    int Longest_Pause() const;
    void Look_At_Listeners(const pollfd *told);
    void Look_At_Connections(const pollfd *told);
    void Accept(std::uint32_t class_cookie, int listener);
    bool Goes_On(ServerConnection &connection, const pollfd *told);

    Receiver &receiver_;
    FileDescriptor wake_;
    std::thread thread_;

    std::mutex lock_; // of what follows
    std::map<std::uint32_t, std::shared_ptr<ListedClass>> listed_;
    bool ending_ = false;

    // The thread's own. What is waited for: `wake_`, the listeners, the connections.
    std::vector<std::pair<std::uint32_t, std::shared_ptr<ListedClass>>> listeners_;
    std::list<ServerConnection> connections_;
    std::vector<pollfd> waiting_;
};
