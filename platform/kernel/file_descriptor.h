#pragma once
// A descriptor of the host that closes itself, and the host's file lock without its interruptions.

#include <cerrno>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor &&other) noexcept : descriptor_(other.Give()) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept {
        if (this != &other) {
            Close();
            descriptor_ = other.Give();
        }
        return *this;
    }
    ~FileDescriptor() { Close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }
    int Give() { return std::exchange(descriptor_, -1); }

    /// Leaves errno alone.
    void Close() {
        const int kept = errno;
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = -1;
        errno = kept;
    }

  private:
    int descriptor_;
};

/// flock that a signal does not interrupt; true when it was done.
inline bool Lock_File(int descriptor, int operation) {
    int result;
    do {
        result = flock(descriptor, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

/// The same, waiting for whoever holds the lock for about `milliseconds`: 0 or a number of errno, EWOULDBLOCK
/// when it is held all the time.
inline int Lock_File_In_Time(int descriptor, int operation, unsigned milliseconds) {
    constexpr unsigned First_Pause = 20, Longest_Pause = 1000; // microseconds
    unsigned long long left = milliseconds * 1000ull;
    for (unsigned pause = First_Pause; !Lock_File(descriptor, operation | LOCK_NB);) {
        if (errno != EWOULDBLOCK || left < pause) return errno;
        usleep(pause);
        left -= pause;
        pause = pause * 2 < Longest_Pause ? pause * 2 : Longest_Pause;
    }
    return 0;
}

/// For the descriptors that a forked child still has, too: a mere close would leave the lock to those. Leaves
/// errno alone.
inline void Unlock_File(int descriptor) {
    const int kept = errno;
    Lock_File(descriptor, LOCK_UN);
    errno = kept;
}
