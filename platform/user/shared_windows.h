#pragma once
// What every process of the machine knows of the others' windows: a table in shared memory.
//
// A thread with a queue has a row, and holds the row's robust lock for as long as it lives: the host's kernel
// marks the lock when the thread ends or its process is killed, so that one word in memory tells whether a
// window's thread lives, whatever number a later process gets. A window without a parent has a row, whose
// number is part of its handle. Rows are given out and taken back under the table's lock, which is robust
// too, each change being one store; a row's other fields are its owner's, but for `state`, `woken` and the
// foreground, which anybody may change at any time. Readers take no lock: a title is read again when its
// writer came in between.

#include <platform/kernel/shared_block.h>
#include <platform/user.h>

#include <atomic>
#include <memory>
#include <pthread.h>
#include <string>
#include <string_view>

/// What a window is at present; the bits of its style.
inline constexpr DWORD State_Bits = WS_VISIBLE | WS_MINIMIZE | WS_MAXIMIZE;
/// Beside them: an iconic window was zoomed before, and is again when it is restored.
inline constexpr DWORD Zoomed_Before_Iconic = 1;
/// What a window's state is when these State_Bits follow on `before`.
DWORD Following_State(DWORD before, DWORD bits);

struct ThreadRow {
    pthread_mutex_t life; // held by the thread
    std::atomic<std::uint32_t> process_id;
    std::atomic<std::uint32_t> thread_id;
    std::atomic<std::uint32_t> woken; // counts what has come for the thread; it sleeps on it
    std::atomic<std::uint32_t> idle;  // it has waited for input with an empty queue

    bool Lives() const;
    /// Lets the thread look at its queue. From any process.
    void Wake();
    void Set_Idle() { idle.store(1, std::memory_order_release); }
    /// Sleeps unless `woken` has moved on from `seen`; may return early.
    void Sleep(std::uint32_t seen, DWORD milliseconds);
};

struct WindowRow {
    static constexpr std::uint32_t Title_Size = 512, Class_Size = 64;

    std::atomic<std::uint32_t> handle; // 0: free
    std::atomic<std::uint32_t> thread; // index of its thread's row
    std::atomic<std::uint32_t> state;  // State_Bits, Zoomed_Before_Iconic
    std::atomic<std::uint32_t> last_popup;
    std::atomic<std::uint32_t> title_version; // odd while the title is being written
    char title[Title_Size];                   // terminated
    char class_name[Class_Size];              // terminated, as long as fits; set before the handle
};

class SeenBlock;
struct MachineTopWindow;

class SharedWindows {
  public:
    static constexpr char Block_Name[] = "windows";
    static constexpr std::uint32_t Most_Threads = 512, Most_Windows = 512;

    /// The table of the machine that this process is on. Null, with the last error, when it cannot be had.
    static std::shared_ptr<SharedWindows> Current();

    /// A row for the calling thread, which alone gives it back. Null when all are taken, or the table's lock
    /// is not to be had in 5 seconds.
    ThreadRow *Take_Thread();
    void Give_Back(ThreadRow &row);
    std::uint32_t Index_Of(const ThreadRow &row) const;

    /// A row and a handle for a window of that thread. Null as before. Nobody waits for it under another
    /// lock.
    WindowRow *Take_Window(const ThreadRow &owner, std::string_view class_name);
    static void Give_Back(WindowRow &row) { row.handle.store(0, std::memory_order_release); }
    /// A handle for a window that has a parent, which no other process is told of.
    std::uint32_t New_Child_Handle();

    /// Null for what is no window without a parent, or whose thread has ended.
    WindowRow *Find(HWND window);
    ThreadRow &Thread_Of(const WindowRow &row);
    /// For the threads of a process that live: false ends the walk.
    template <class Visit>
    void For_Each_Thread_Of(std::uint32_t process_id, Visit visit);

    /// Gives the row the State_Bits that `bits_after` makes of its state, again when somebody else changes it
    /// meanwhile. What it was.
    template <class BitsAfter>
    static DWORD Change_State(WindowRow &row, BitsAfter bits_after);

    static void Set_Title(WindowRow &row, std::string_view title);
    static std::string Title(const WindowRow &row);

    HWND Foreground();
    /// Wakes both who had it and who has it now.
    void Set_Foreground(HWND window);

    static void Prepare(void *contents);
    /// Shows the rows of a table that is only looked at.
    static bool See(const SeenBlock &block, bool (*visit)(const MachineTopWindow *, void *), void *context);

    struct Table; // as it lies in memory

  private:
    class TableLock;
    friend void Let_Shared_Windows_Go();
    SharedWindows(std::unique_ptr<SharedBlock> block, Table &table);

    std::unique_ptr<SharedBlock> block_;
    Table &table_;
};

/// The table's name goes unless another process has it, as at the process's end.
void Let_Shared_Windows_Go();

struct SharedWindows::Table {
    pthread_mutex_t lock;
    std::atomic<std::uint32_t> foreground;
    std::atomic<std::uint32_t> last_child; // counts the handles of windows with a parent
    std::uint32_t next_window;             // where the search for a free row begins
    std::uint32_t generations[Most_Windows];
    ThreadRow threads[Most_Threads];
    WindowRow windows[Most_Windows];
};

template <class BitsAfter>
DWORD SharedWindows::Change_State(WindowRow &row, BitsAfter bits_after) {
    std::uint32_t before = row.state.load(std::memory_order_acquire);
    while (!row.state.compare_exchange_weak(before, Following_State(before, bits_after(before)),
                                            std::memory_order_acq_rel, std::memory_order_acquire)) {
    }
    return before;
}

template <class Visit>
void SharedWindows::For_Each_Thread_Of(std::uint32_t process_id, Visit visit) {
    for (ThreadRow &row : table_.threads) {
        if (row.process_id.load(std::memory_order_acquire) != process_id || !row.Lives()) continue;
        if (!visit(row)) return;
    }
}
