#pragma once
// The messages that programs of the suite broadcast, heard as one of their listeners.

#include <deque>
#include <mutex>
#include <set>
#include <string>

namespace tools {

struct Broadcast {
    unsigned long sender; // a process
    long code;
    std::string data;
    long lost; // messages that were not heard in front of this one
};

/// "17", "0x11" or four characters between quotation marks or without. False for what is none of these.
bool Read_Code(const std::string &text, long &code);

/// Hears from its making to its end. Messages wait for Take; beyond 10,000 the oldest are lost, and counted.
class BroadcastListener {
  public:
    BroadcastListener() = default;
    ~BroadcastListener();
    BroadcastListener(const BroadcastListener &) = delete;
    BroadcastListener &operator=(const BroadcastListener &) = delete;

    /// False when the suite has no log companion, or it takes no more listeners.
    bool Begin();
    std::deque<Broadcast> Take();

  private:
    static void Hear(unsigned long sender, long code, char *data, long size, long lost, void *context);

    void *client_ = nullptr;
    std::mutex lock_; // of what follows
    std::deque<Broadcast> heard_;
    long lost_ = 0;
};

} // namespace tools
