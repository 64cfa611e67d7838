#include <platform/user/thread_queue.h>

#include <platform/kernel.h>
#include <platform/user/window_end.h>

#include <algorithm>
#include <unistd.h>
#include <unordered_map>
#include <utility>

namespace {

struct Queues {
    std::mutex lock;
    std::unordered_map<DWORD, std::shared_ptr<ThreadQueue>> by_thread;
};

constinit std::atomic<Queues *> the_queues{nullptr};

// The calling thread's hold of its queue. What runs after its end in the same thread finds none. The first
// thread keeps its queue and windows through the exit routines; they end with the process.
constinit thread_local std::shared_ptr<ThreadQueue> *own = nullptr;
constinit thread_local bool thread_has_ended = false;

struct ThreadEnd {
    bool in_use = false;
    ~ThreadEnd();
};
thread_local ThreadEnd thread_end;

// A forked child has none of the threads, and their rows are not its own. What it inherited stays lying: it
// may have been in the middle of a change.
void Begin_Anew_In_Child() {
    own = nullptr;
    the_queues.store(nullptr, std::memory_order_relaxed);
}

Queues &The_Queues() {
    if (Queues *queues = the_queues.load(std::memory_order_acquire)) return *queues;
    [[maybe_unused]] static const int told = pthread_atfork(nullptr, nullptr, Begin_Anew_In_Child);
    auto fresh = std::make_unique<Queues>();
    Queues *made = nullptr;
    if (the_queues.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *made;
}

ThreadEnd::~ThreadEnd() {
    if (!own || gettid() == getpid()) return;
    const std::unique_ptr<std::shared_ptr<ThreadQueue>> last(std::exchange(own, nullptr));
    thread_has_ended = true;
    ThreadQueue &queue = **last;
    Remove_Windows_Of(queue);
    {
        Queues &queues = The_Queues();
        std::lock_guard guard(queues.lock);
        queues.by_thread.erase(queue.Thread_Id());
    }
    queue.Close();
}

// Given back unless a queue has it.
struct TakenRow {
    explicit TakenRow(SharedWindows &from) : shared(from), row(from.Take_Thread()) {}
    ~TakenRow() {
        if (row) shared.Give_Back(*row);
    }
    TakenRow(const TakenRow &) = delete;
    TakenRow &operator=(const TakenRow &) = delete;

    SharedWindows &shared;
    ThreadRow *row;
};

std::unique_ptr<std::shared_ptr<ThreadQueue>> Make_Queue() {
    std::shared_ptr<SharedWindows> shared = SharedWindows::Current();
    if (!shared) return nullptr;
    TakenRow taken(*shared);
    if (!taken.row) {
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return nullptr;
    }
    const auto thread_id = static_cast<DWORD>(gettid());
    auto hold = std::make_unique<std::shared_ptr<ThreadQueue>>(
        std::make_shared<ThreadQueue>(thread_id, shared, taken.row));
    Queues &queues = The_Queues();
    std::lock_guard guard(queues.lock);
    queues.by_thread[thread_id] = *hold;
    taken.row = nullptr;
    return hold;
}

DWORD Input_Kind(UINT message) {
    if (message >= WM_KEYDOWN && message <= WM_CHAR) return QS_KEY;
    if (message == WM_MOUSEMOVE) return QS_MOUSEMOVE;
    return message > WM_MOUSEMOVE && message <= WM_LBUTTONUP ? QS_MOUSEBUTTON : 0;
}

} // namespace

ThreadQueue::ThreadQueue(DWORD thread_id, std::shared_ptr<SharedWindows> shared, ThreadRow *row)
    : thread_id_(thread_id), shared_(std::move(shared)), row_(row) {}

std::shared_ptr<ThreadQueue> ThreadQueue::Own() {
    if (thread_has_ended) {
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return nullptr;
    }
    if (!own) {
        own = Make_Queue().release();
        thread_end.in_use = own != nullptr; // from here on its destructor runs
    }
    if (!own) return nullptr;
    (*own)->Move_To_Current_Machine();
    return *own;
}

std::shared_ptr<ThreadQueue> ThreadQueue::Existing() {
    return own ? *own : nullptr;
}

std::shared_ptr<ThreadQueue> ThreadQueue::Of_Thread(DWORD thread_id) {
    Queues &queues = The_Queues();
    std::lock_guard guard(queues.lock);
    const auto found = queues.by_thread.find(thread_id);
    return found == queues.by_thread.end() ? nullptr : found->second;
}

bool ThreadQueue::Is_Own() const {
    return own && own->get() == this;
}

// The rows of machines that it has left stay as long as the thread: windows there may be its own.
void ThreadQueue::Move_To_Current_Machine() {
    std::shared_ptr<SharedWindows> current = SharedWindows::Current();
    if (!current || current == shared_) return;
    earlier_.reserve(earlier_.size() + 1);
    ThreadRow *row = current->Take_Thread();
    if (!row) return;
    std::lock_guard guard(lock_);
    earlier_.emplace_back(std::move(shared_), row_.load());
    shared_ = std::move(current);
    row_ = row;
}

void ThreadQueue::Close() {
    {
        std::lock_guard guard(lock_);
        closed_ = true;
        posted_.clear();
    }
    Refuse_Sent();
    std::lock_guard guard(lock_);
    shared_->Give_Back(Row());
    for (auto &[shared, row] : earlier_) shared->Give_Back(*row);
    earlier_.clear();
}

long ThreadQueue::Post(const MSG &message) {
    std::lock_guard guard(lock_);
    if (closed_) return ERROR_INVALID_THREAD_ID;
    if (posted_.size() >= Most_Posted) return ERROR_NOT_ENOUGH_QUOTA;
    posted_.push_back(message);
    Row().Wake();
    return NO_ERROR;
}

void ThreadQueue::Post_Quit(int exit_code) {
    std::lock_guard guard(lock_);
    quit_ = true;
    exit_code_ = exit_code;
    Row().Wake();
}

void ThreadQueue::Wake() {
    std::lock_guard guard(lock_);
    if (!closed_) Row().Wake();
}

void ThreadQueue::Forget_Window(HWND window) {
    std::lock_guard guard(lock_);
    std::erase_if(posted_, [window](const MSG &message) { return message.hwnd == window; });
}

bool ThreadQueue::Matches(const Filter &filter, const MSG &message) const {
    if ((filter.first || filter.last) && (message.message < filter.first || message.message > filter.last))
        return false;
    if (!filter.window) return true;
    if (filter.window == reinterpret_cast<HWND>(-1)) return message.hwnd == nullptr;
    return message.hwnd == filter.window || (message.hwnd && IsChild(filter.window, message.hwnd));
}

bool ThreadQueue::Take(const Filter &filter, bool remove, MSG &message) {
    const TreeLock tree; // before the queue's own: the filter asks for the family
    std::lock_guard guard(lock_);
    const auto found =
        std::find_if(posted_.begin(), posted_.end(), [&](const MSG &each) { return Matches(filter, each); });
    if (found != posted_.end()) {
        message = *found;
        if (remove) posted_.erase(found);
        return true;
    }
    if (!quit_) return false;
    message = {nullptr, WM_QUIT, static_cast<WPARAM>(exit_code_), 0, GetTickCount(), {0, 0}};
    if (remove) quit_ = false;
    return true;
}

// Input is posted like all else.
bool ThreadQueue::Has(DWORD mask) {
    std::lock_guard guard(lock_);
    if ((mask & QS_SENDMESSAGE) && !sent_.empty()) return true;
    if (mask & (QS_POSTMESSAGE | QS_ALLPOSTMESSAGE)) return !posted_.empty() || quit_;
    return std::any_of(posted_.begin(), posted_.end(),
                       [mask](const MSG &each) { return mask & Input_Kind(each.message); });
}
