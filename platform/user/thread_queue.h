#pragma once
// A thread's queue: what was posted to it, what other threads send and wait for, and what it works with.
//
// Made when the thread first needs one, and gone with the thread, and its windows with it. What other threads
// put in is under the queue's own lock; focus, active window and pointer are under the tree's lock.

#include <platform/user/window.h>

#include <deque>
#include <mutex>

struct SentMessage {
    WindowPointer window;
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
    std::shared_ptr<ThreadQueue> sender;
    LRESULT result = 0;
    std::atomic<bool> answered{false};
};

/// Whose turn comes whenever a thread looks for messages, behind what was sent to its windows.
class QueueVisitor {
  public:
    virtual void Messages_Are_Looked_For() = 0;

  protected:
    ~QueueVisitor() = default;
};

class ThreadQueue : public std::enable_shared_from_this<ThreadQueue> {
  public:
    static constexpr std::size_t Most_Posted = 10000;

    /// The calling thread's, made if need be. Null, with the last error, when it cannot be had, or the thread
    /// is ending. May throw std::bad_alloc.
    static std::shared_ptr<ThreadQueue> Own();
    /// The calling thread's, null when it has none.
    static std::shared_ptr<ThreadQueue> Existing();
    /// Null when the thread has none.
    static std::shared_ptr<ThreadQueue> Of_Thread(DWORD thread_id);
    bool Is_Own() const;
    DWORD Thread_Id() const { return thread_id_; }

    /// The row on the machine that the thread is on at present.
    ThreadRow &Row() const { return *row_.load(std::memory_order_acquire); }
    /// False for a thread that ended without a word, as the first one may.
    bool Lives() const;
    const std::shared_ptr<SharedWindows> &Shared() const { return shared_; }

    // From any thread.
    long Post(const MSG &message);
    void Post_Quit(int exit_code);
    /// Waits for the answer, and answers what is sent to the calling thread meanwhile.
    static LRESULT Send(const std::shared_ptr<SentMessage> &sent, ThreadQueue &receiver);
    void Forget_Window(HWND window);
    /// Has the thread look, unless it has ended.
    void Wake();

    // By the own thread.
    struct Filter {
        HWND window;
        UINT first, last;
    };
    bool Take(const Filter &filter, bool remove, MSG &message);
    bool Has(DWORD mask);
    /// Answers what was sent, and sees to what other processes have changed.
    void Answer_Sent();
    /// What has come so far; Sleep returns when more has.
    std::uint32_t Seen() const { return Row().woken.load(std::memory_order_seq_cst); }
    void Sleep(std::uint32_t seen, DWORD milliseconds) { Row().Sleep(seen, milliseconds); }

    Window *focus = nullptr;
    Window *active = nullptr;   // without a parent
    bool in_foreground = false; // `active` is the machine's, or was when the thread looked last
    HWND pointer_held_by = nullptr, pointer_held_for = nullptr; // a combo box's list holds it for the box

    std::shared_ptr<QueueVisitor> visitor; // of the own thread; may be null

    ThreadQueue(DWORD thread_id, std::shared_ptr<SharedWindows> shared, ThreadRow *row);
    /// At the thread's end.
    void Close();

  private:
    void Move_To_Current_Machine();
    bool Withdraw(const std::shared_ptr<SentMessage> &sent);
    std::shared_ptr<SentMessage> Next_Sent();
    void Refuse_Sent();
    void Wait_For_Answer(const SentMessage &sent);
    bool Matches(const Filter &filter, const MSG &message) const;

    const DWORD thread_id_;
    std::mutex lock_; // of what follows
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<SentMessage>> sent_;
    bool quit_ = false;
    int exit_code_ = 0;
    bool closed_ = false;

    std::shared_ptr<SharedWindows> shared_;
    std::atomic<ThreadRow *> row_;                                                // the own thread changes it
    std::vector<std::pair<std::shared_ptr<SharedWindows>, ThreadRow *>> earlier_; // of machines it has left
};
