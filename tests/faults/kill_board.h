#pragma once
// What the workers of the kill test write down where a kill does not take it away: memory that all share.

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

inline constexpr int Workers = 8, Shared_Locks = 3;
inline constexpr unsigned Starting = 100; // the first operation of a worker, under way until it is ready

inline unsigned Milliseconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned>(now.tv_sec) * 1000u + static_cast<unsigned>(now.tv_nsec / 1000000);
}

struct KillBoard {
    struct Worker {
        std::atomic<unsigned> operations, longest, told; // longest in milliseconds
        std::atomic<unsigned> begun, under_way;          // of the operation that runs, and which: 0 is none
        std::atomic<unsigned> longest_is;
        char fault[100]; // the first that was met
    };
    Worker workers[Workers];
    std::atomic<unsigned> inside[Shared_Locks]; // who is inside the lock

    void Begin(int worker, unsigned operation) {
        workers[worker].begun = Milliseconds();
        workers[worker].under_way = operation;
    }
    void End(int worker) {
        Note_Wait(worker);
        workers[worker].under_way = 0;
        ++workers[worker].operations;
    }
    void Note_Wait(int worker) {
        Worker &of = workers[worker];
        const unsigned begun = of.begun, taken = Milliseconds() - begun; // in this order: it may begin anew
        if (of.under_way == 0 || taken <= of.longest) return;
        of.longest = taken;
        of.longest_is = of.under_way.load();
    }
    void Fault(int worker, const std::string &what) {
        if (!workers[worker].fault[0]) what.copy(workers[worker].fault, sizeof workers[worker].fault - 1);
    }
};

/// The board in a file, which is made, all zeroes, if it is not there.
class SharedBoard {
  public:
    explicit SharedBoard(const std::string &path) {
        const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0 || ftruncate(file, sizeof(KillBoard)) != 0) std::abort();
        board_ = static_cast<KillBoard *>(
            mmap(nullptr, sizeof(KillBoard), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        close(file);
        if (board_ == MAP_FAILED) std::abort();
    }
    ~SharedBoard() { munmap(board_, sizeof(KillBoard)); }
    SharedBoard(const SharedBoard &) = delete;
    SharedBoard &operator=(const SharedBoard &) = delete;
    KillBoard *operator->() const { return board_; }

  private:
    KillBoard *board_;
};
