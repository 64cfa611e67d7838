#include <platform/com/server_connection.h>

#include <platform/com/class_list.h>
#include <platform/kernel.h>

ServerConnection::ServerConnection(std::uint32_t class_cookie, FileDescriptor socket)
    : class_cookie_(class_cookie),
      exchange_(std::make_shared<Exchange>()),
      socket_(std::move(socket)),
      process_(Process_Behind(socket_.Get())),
      dawdles_since_(GetTickCount()) {}

void ServerConnection::Add_To(std::vector<pollfd> &waiting) const {
    const short events = step_ == Step::Reading ? POLLIN : step_ == Step::Writing ? POLLOUT : 0;
    waiting.push_back({socket_.Get(), events, 0});
    waiting.push_back({process_.Get(), POLLIN, 0});
}

ServerConnection::News ServerConnection::Look(const pollfd *told) {
    if (told[1].revents != 0) return News::Ended;
    const short events = told[0].revents;
    if (step_ == Step::Reading && (events & POLLIN)) return Read();
    if (step_ == Step::Writing && (events & POLLOUT)) return Write();
    return events & (POLLHUP | POLLERR | POLLNVAL) ? News::Ended : News::None;
}

ServerConnection::News ServerConnection::Read() {
    if (!Is_Dawdling()) dawdles_since_ = GetTickCount();
    const Passage passage = reader_.Read(socket_.Get());
    if (passage == Passage::Under_Way) return News::None;
    if (passage == Passage::Ended) return News::Ended;
    is_new_ = false;
    step_ = Step::Working;
    return News::Request;
}

ServerConnection::News ServerConnection::Pass_Answer_On() {
    if (step_ != Step::Working || !exchange_->answered.load(std::memory_order_acquire)) return News::None;
    writer_.Begin(exchange_->answer);
    exchange_->answer = {};
    exchange_->answered.store(false, std::memory_order_release);
    step_ = Step::Writing;
    return Write();
}

ServerConnection::News ServerConnection::Write() {
    const Passage passage = writer_.Write(socket_.Get());
    if (passage == Passage::Done) step_ = Step::Reading;
    return passage == Passage::Ended ? News::Ended : News::None;
}

bool ServerConnection::Has_Dawdled_Too_Long() const {
    return Is_Dawdling() && GetTickCount() - dawdles_since_ > Patience;
}
