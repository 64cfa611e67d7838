#include <tools/log/broadcasts.h>

#include <kelmara/shared_state/log.h>

#include <cerrno>
#include <cstdlib>

namespace tools {

namespace {

constexpr std::size_t Most_Waiting = 10000;

} // namespace

bool Read_Code(const std::string &text, long &code) {
    if (text.empty()) return false;
    char *end = nullptr;
    errno = 0;
    const long long number = std::strtoll(text.c_str(), &end, 0);
    if (*end == 0 && errno == 0 && number >= -0x80000000LL && number <= 0xFFFFFFFFLL) {
        code = static_cast<long>(static_cast<unsigned long>(number));
        return true;
    }
    const bool quoted = text.size() == 6 && (text[0] == '\'' || text[0] == '"') && text[5] == text[0];
    const std::string characters = quoted ? text.substr(1, 4) : text;
    if (characters.size() != 4) return false;
    unsigned long value = 0;
    for (const char c : characters) value = value << 8 | static_cast<unsigned char>(c);
    code = static_cast<long>(value);
    return true;
}

bool BroadcastListener::Begin() {
    return Add_Message_Client(0, Hear, this, false, &client_) == 0;
}

BroadcastListener::~BroadcastListener() {
    if (client_ != nullptr) Remove_Message_Client(client_);
}

void BroadcastListener::Hear(unsigned long sender, long code, char *data, long size, long lost,
                             void *context) {
    auto &listener = *static_cast<BroadcastListener *>(context);
    Broadcast heard = {sender, code, std::string(data, size > 0 ? static_cast<std::size_t>(size) : 0), lost};
    const std::lock_guard guard(listener.lock_);
    if (listener.heard_.size() >= Most_Waiting) {
        listener.lost_ += listener.heard_.front().lost + 1;
        listener.heard_.pop_front();
    }
    listener.heard_.push_back(std::move(heard));
}

std::deque<Broadcast> BroadcastListener::Take() {
    const std::lock_guard guard(lock_);
    std::deque<Broadcast> taken;
    taken.swap(heard_);
    if (!taken.empty()) taken.front().lost += lost_;
    if (!taken.empty()) lost_ = 0;
    return taken;
}

} // namespace tools
