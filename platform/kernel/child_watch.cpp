#include <platform/kernel/child_watch.h>

#include <platform/kernel/outcome.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <memory>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <vector>

namespace {

constexpr std::size_t Stack_Size = 256 * 1024;
constexpr useconds_t Pause = 1000;

// Kept for the life of the process: its thread is never asked to end.
struct Watch {
    std::mutex lock;
    bool running = false;
    FileDescriptor news; // written to when the list changes
    Children children;
};

constinit std::atomic<Watch *> the_watch{nullptr};

// A forked child has neither the thread nor the processes; its lock may be held for ever.
void Begin_Anew_In_Child() {
    the_watch.store(nullptr, std::memory_order_relaxed);
}

Watch &The_Watch() {
    if (Watch *watch = the_watch.load(std::memory_order_acquire)) return *watch;
    [[maybe_unused]] static const int told = pthread_atfork(nullptr, nullptr, Begin_Anew_In_Child);
    auto fresh = std::make_unique<Watch>();
    Watch *made = nullptr;
    if (the_watch.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *made;
}

// False for lack of memory.
bool List_What_To_Wait_For(Watch &watch, std::vector<pollfd> &waiting) {
    const std::lock_guard guard(watch.lock);
    waiting.clear();
    try {
        waiting.push_back({watch.news.Get(), POLLIN, 0});
        for (const ProcessObject *child : watch.children) waiting.push_back({child->Descriptor(), POLLIN, 0});
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

// True when there was anything to do.
bool Take_In_Ended(Watch &watch) {
    Children ended;
    {
        const std::lock_guard guard(watch.lock);
        for (auto next = watch.children.begin(); next != watch.children.end();) {
            const auto child = next++;
            if ((*child)->Has_Ended()) ended.splice(ended.end(), watch.children, child);
        }
    }
    for (ProcessObject *child : ended) child->Release();
    return !ended.empty();
}

// True when the list has changed.
bool Wait_For_News(std::vector<pollfd> &waiting) {
    std::uint64_t count;
    return poll(waiting.data(), waiting.size(), -1) > 0 && waiting[0].revents != 0 &&
           read(waiting[0].fd, &count, sizeof count) == static_cast<ssize_t>(sizeof count);
}

void *Run(void *) {
    Watch &watch = The_Watch();
    std::vector<pollfd> waiting;
    for (;;) {
        const bool changed = List_What_To_Wait_For(watch, waiting) && Wait_For_News(waiting);
        // An end that cannot be taken in yet, or a lack of memory: no reason to go round and round.
        if (!Take_In_Ended(watch) && !changed) usleep(Pause);
    }
}

bool Start_Thread() {
    sigset_t all, before;
    sigfillset(&all);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, Stack_Size);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pthread_t thread;
    const bool started = pthread_create(&thread, &attributes, Run, nullptr) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_attr_destroy(&attributes);
    return started;
}

} // namespace

bool Begin_Child_Watch() {
    Watch &watch = The_Watch();
    const std::lock_guard guard(watch.lock);
    if (watch.running) return true;
    if (!watch.news) watch.news = FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    watch.running = watch.news && Start_Thread();
    return watch.running;
}

void Watch_Child(Children &place) {
    place.front()->Retain();
    Watch &watch = The_Watch();
    {
        const std::lock_guard guard(watch.lock);
        watch.children.splice(watch.children.end(), place);
    }
    eventfd_write(watch.news.Get(), 1);
}

bool Watch_Stranger(ProcessObject &process) {
    return Within_Memory(false, [&] {
        Children place = {&process};
        if (!Begin_Child_Watch()) return false;
        Watch_Child(place);
        return true;
    });
}

// Its descriptor may go with it: what is waited for is listed again.
void Watch_Stranger_No_More(ProcessObject &process) {
    Watch &watch = The_Watch();
    Children found;
    {
        const std::lock_guard guard(watch.lock);
        const auto at = std::find(watch.children.begin(), watch.children.end(), &process);
        if (at == watch.children.end()) return;
        found.splice(found.end(), watch.children, at);
    }
    eventfd_write(watch.news.Get(), 1);
    process.Release();
}

ProcessObject *Find_Child(pid_t id) {
    Watch &watch = The_Watch();
    const std::lock_guard guard(watch.lock);
    for (ProcessObject *child : watch.children) {
        if (!child->Was_Started_Here() || child->Id() != id || child->Has_Ended()) continue;
        child->Retain();
        return child;
    }
    return nullptr;
}
