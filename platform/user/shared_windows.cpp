#include <platform/user/shared_windows.h>

#include <platform/kernel.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/robust_lock.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <mutex>
#include <unistd.h>

namespace {

// A handle is four times (generation * 1024 + place). The lower half of the places are rows of the table, the
// upper half are for windows that have none. Generation 0 is the desktop's.
constexpr std::uint32_t Places = 1024, Most_Generations = 1u << 20;
static_assert(SharedWindows::Most_Windows * 2 == Places);

// Another start for each table, so that handles of an earlier one are not met again.
std::uint32_t First_Generation() {
    timespec now;
    clock_gettime(CLOCK_BOOTTIME, &now);
    return 1 + static_cast<std::uint32_t>(now.tv_sec) % 4096;
}

constexpr int Patience = 5; // seconds

// A holder that is stopped is waited for within limits.
int Lock_In_Time(pthread_mutex_t &lock) {
    timespec limit;
    clock_gettime(CLOCK_MONOTONIC, &limit);
    limit.tv_sec += Patience;
    return pthread_mutex_clocklock(&lock, CLOCK_MONOTONIC, &limit);
}

struct Opened {
    std::mutex lock;
    std::shared_ptr<SharedWindows> table;
    unsigned machine = 0;
};

constinit std::atomic<Opened *> the_opened{nullptr};

// A forked child opens the table for itself: what it inherited is its parent's, the lock perhaps held for
// ever.
void Begin_Anew_In_Child() {
    the_opened.store(nullptr, std::memory_order_relaxed);
}

Opened &The_Opened() {
    if (Opened *opened = the_opened.load(std::memory_order_acquire)) return *opened;
    [[maybe_unused]] static const int told = pthread_atfork(nullptr, nullptr, Begin_Anew_In_Child);
    auto fresh = std::make_unique<Opened>();
    Opened *made = nullptr;
    if (the_opened.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *made;
}

} // namespace

class SharedWindows::TableLock {
  public:
    explicit TableLock(Table &table) : lock_(table.lock), held_(Owns_After(Lock_In_Time(lock_), lock_)) {}
    ~TableLock() {
        if (held_) pthread_mutex_unlock(&lock_);
    }
    bool Held() const { return held_; }
    TableLock(const TableLock &) = delete;
    TableLock &operator=(const TableLock &) = delete;

  private:
    pthread_mutex_t &lock_;
    const bool held_;
};

void SharedWindows::Prepare(void *contents) {
    auto &table = *static_cast<Table *>(contents);
    Make_Robust_Lock(table.lock);
    for (ThreadRow &row : table.threads) Make_Robust_Lock(row.life);
    const std::uint32_t first = First_Generation();
    std::fill(std::begin(table.generations), std::end(table.generations), first);
    table.last_child.store(first * Most_Windows, std::memory_order_relaxed);
}

SharedWindows::SharedWindows(std::unique_ptr<SharedBlock> block, Table &table)
    : block_(std::move(block)), table_(table) {}

std::shared_ptr<SharedWindows> SharedWindows::Current() {
    Opened &opened = The_Opened();
    std::lock_guard guard(opened.lock);
    const unsigned machine = Machine_Serial();
    if (opened.table && opened.machine == machine) return opened.table;
    opened.table.reset();
    SharedBlock::Opened block =
        SharedBlock::Open(SharedBlockKind::Internal, Block_Name, sizeof(Table), {Prepare, nullptr});
    if (block.block && block.block->Size() != sizeof(Table)) block.error = ERROR_REVISION_MISMATCH;
    void *contents = block.error == NO_ERROR && block.block ? block.block->Contents() : nullptr;
    if (!contents) {
        SetLastError(static_cast<DWORD>(block.error ? block.error : ERROR_NOT_ENOUGH_MEMORY));
        return nullptr;
    }
    opened.table.reset(new SharedWindows(std::move(block.block), *static_cast<Table *>(contents)));
    opened.machine = machine;
    return opened.table;
}

void Let_Shared_Windows_Go() {
    Opened *opened = the_opened.load(std::memory_order_acquire);
    if (!opened) return;
    std::unique_lock guard(opened->lock, std::try_to_lock);
    if (guard && opened->table) opened->table->block_->Let_Name_Go_If_Last(SharedBlock::Patience::Give_Up);
}

[[gnu::destructor]] static void At_The_End() {
    Let_Shared_Windows_Go();
}

ThreadRow *SharedWindows::Take_Thread() {
    const TableLock guard(table_);
    if (!guard.Held()) return nullptr;
    for (ThreadRow &row : table_.threads) {
        if (row.Lives()) continue;
        // What a dead thread left goes before the row lives again.
        const std::uint32_t index = Index_Of(row);
        for (WindowRow &window : table_.windows) {
            if (window.thread.load(std::memory_order_relaxed) == index) Give_Back(window);
        }
        row.process_id.store(0, std::memory_order_release);
        if (!Owns_After(pthread_mutex_trylock(&row.life), row.life)) continue;
        row.idle.store(0, std::memory_order_relaxed);
        row.thread_id.store(static_cast<std::uint32_t>(gettid()), std::memory_order_relaxed);
        row.process_id.store(static_cast<std::uint32_t>(getpid()), std::memory_order_release);
        return &row;
    }
    return nullptr;
}

void SharedWindows::Give_Back(ThreadRow &row) {
    row.process_id.store(0, std::memory_order_relaxed);
    pthread_mutex_unlock(&row.life);
}

std::uint32_t SharedWindows::Index_Of(const ThreadRow &row) const {
    return static_cast<std::uint32_t>(&row - table_.threads);
}

ThreadRow &SharedWindows::Thread_Of(const WindowRow &row) {
    return table_.threads[row.thread.load(std::memory_order_relaxed) % Most_Threads];
}

WindowRow *SharedWindows::Take_Window(const ThreadRow &owner, std::string_view class_name) {
    const TableLock guard(table_);
    if (!guard.Held()) return nullptr;
    for (std::uint32_t i = 0; i < Most_Windows; ++i) {
        const std::uint32_t place = (table_.next_window + i) % Most_Windows;
        WindowRow &row = table_.windows[place];
        if (row.handle.load(std::memory_order_relaxed) && Thread_Of(row).Lives()) continue;
        Give_Back(row);
        table_.next_window = (place + 1) % Most_Windows;
        std::uint32_t &generation = table_.generations[place];
        generation = generation < Most_Generations - 1 ? generation + 1 : 1;
        row.state.store(0, std::memory_order_relaxed);
        row.last_popup.store(0, std::memory_order_relaxed);
        row.title_version.store(0, std::memory_order_relaxed);
        row.title[0] = 0;
        row.class_name[class_name.copy(row.class_name, WindowRow::Class_Size - 1)] = 0;
        row.thread.store(Index_Of(owner), std::memory_order_relaxed);
        row.handle.store((generation * Places + place) * 4, std::memory_order_release);
        return &row;
    }
    return nullptr;
}

std::uint32_t SharedWindows::New_Child_Handle() {
    for (;;) {
        const std::uint32_t count = table_.last_child.fetch_add(1, std::memory_order_relaxed);
        const std::uint32_t generation = count / Most_Windows % Most_Generations;
        if (generation == 0) continue;
        return (generation * Places + Most_Windows + count % Most_Windows) * 4;
    }
}

WindowRow *SharedWindows::Find(HWND window) {
    const auto handle = reinterpret_cast<std::uint32_t>(window);
    const std::uint32_t place = handle / 4 % Places;
    if (handle == 0 || handle % 4 != 0 || place >= Most_Windows) return nullptr;
    WindowRow &row = table_.windows[place];
    if (row.handle.load(std::memory_order_acquire) != handle || !Thread_Of(row).Lives()) return nullptr;
    return &row;
}

DWORD Following_State(DWORD before, DWORD bits) {
    const DWORD was_zoomed = before & ((before & WS_MINIMIZE) ? Zoomed_Before_Iconic : WS_MAXIMIZE);
    return bits | ((bits & WS_MINIMIZE) && was_zoomed ? Zoomed_Before_Iconic : 0);
}

void SharedWindows::Set_Title(WindowRow &row, std::string_view title) {
    const std::size_t length = std::min<std::size_t>(title.size(), WindowRow::Title_Size - 1);
    const std::uint32_t version = row.title_version.load(std::memory_order_relaxed);
    row.title_version.store(version + 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(row.title, title.data(), length);
    row.title[length] = 0;
    row.title_version.store(version + 2, std::memory_order_release);
}

// A writer that stands still in the middle is not waited for.
std::string SharedWindows::Title(const WindowRow &row) {
    char title[WindowRow::Title_Size];
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const std::uint32_t version = row.title_version.load(std::memory_order_acquire);
        std::memcpy(title, row.title, sizeof title);
        std::atomic_thread_fence(std::memory_order_acquire);
        const bool whole = version % 2 == 0 && row.title_version.load(std::memory_order_relaxed) == version;
        if (whole) break;
    }
    return std::string(title, strnlen(title, sizeof title - 1));
}

HWND SharedWindows::Foreground() {
    const auto window = reinterpret_cast<HWND>(table_.foreground.load(std::memory_order_acquire));
    return window && Find(window) ? window : nullptr;
}

void SharedWindows::Set_Foreground(HWND window) {
    const auto handle = reinterpret_cast<std::uint32_t>(window);
    const std::uint32_t before = table_.foreground.exchange(handle, std::memory_order_acq_rel);
    if (before == handle) return;
    for (const std::uint32_t touched : {before, handle}) {
        const WindowRow *row = Find(reinterpret_cast<HWND>(touched));
        if (row) Thread_Of(*row).Wake();
    }
}
