#pragma once
// The message clients of this process, each with a thread that reads the board and calls its callback.
//
// A client is stopped when its thread has left the callback for good. Who stops one waits for that, except a
// client's own callback, and one that the other would wait for in turn. A stopped client's place on the board
// is free at once; its thread and memory are taken in by the next call from outside. Any thread may call
// anything. An object lives as long as its clients' threads, which a callback that does not return can keep
// beyond all bounds.

#include <reference_suite/companions/log/log_companion.h>
#include <reference_suite/companions/log/message_board.h>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

class MessageClients {
  public:
    /// Before it, and after Remove_All, there are no clients to be had.
    void Open();
    /// Get_Messages without its checks, ERROR_INVALID_FUNCTION unless open; throws std::bad_alloc and
    /// std::system_error, and nothing is left.
    long Add(const std::shared_ptr<MessageBoard> &board, long code, LogMessageCallback callback,
             void *context, bool own_too, void **handle);
    /// Stop_Messages.
    void Remove(void *handle);
    /// Stops all, and waits two seconds for them. A thread that is in its callback even then is left to
    /// itself; it ends when the callback returns.
    void Remove_All();
    void Take_In_Ended();

  private:
    struct Client {
        ~Client();
        bool Wants(const MessageHead &head) const;

        std::shared_ptr<MessageBoard> board;
        BoardReader reader;
        long code = 0;
        LogMessageCallback callback = nullptr;
        void *context = nullptr;
        bool own_too = false;
        std::unique_ptr<char[]> data; // of the message that is handed over
        std::uint32_t lost = 0;       // not told yet

        std::atomic<bool> is_stopping{false};
        bool has_ended = false;             // under lock_, as is what follows
        const Client *waited_for = nullptr; // that this client's callback is stopping
        std::thread thread;
    };
    using ClientPointer = std::shared_ptr<Client>;

    void Run(Client &client);
    static void Tell_To_Stop(Client &client);
    void Hand_Over(Client &client, const MessageHead &head);
    bool Would_Wait_For_This_Thread(const Client &client) const;
    void Take_In_Ended(std::unique_lock<std::mutex> &lock);

    std::mutex lock_; // of what follows
    bool is_open_ = false;
    std::condition_variable ended_;
    std::map<std::uint32_t, ClientPointer> clients_; // by their numbers on the board
    static thread_local Client *own_client;          // whose thread this is
};
