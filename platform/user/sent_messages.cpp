// What threads send to each other's windows: it lies in the receiver's queue until the receiver looks for
// messages, and the sender waits.

#include <platform/user/thread_queue.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>
#include <platform/user/state_changes.h>

LRESULT ThreadQueue::Send(const std::shared_ptr<SentMessage> &sent, ThreadQueue &receiver) {
    const long error = Code_Of([&]() -> long {
        std::lock_guard guard(receiver.lock_);
        if (receiver.closed_) return ERROR_INVALID_WINDOW_HANDLE;
        receiver.sent_.push_back(sent);
        receiver.Row().Wake();
        return NO_ERROR;
    });
    if (!Succeed_Or_Tell(error)) return 0;
    // What the message points to lasts as long as this call, also when it ends by an exception.
    struct Withdrawal {
        const std::shared_ptr<SentMessage> &sent;
        ThreadQueue &receiver;
        ~Withdrawal() {
            if (!receiver.Withdraw(sent)) receiver.Wait_For_Answer(*sent);
        }
    } withdrawal{sent, receiver};
    for (;;) {
        const std::uint32_t seen = sent->sender->Seen();
        const bool may_answer = receiver.Lives();
        if (sent->answered.load(std::memory_order_acquire)) return sent->result;
        if (!may_answer) return Succeed_Or_Tell(ERROR_INVALID_WINDOW_HANDLE);
        sent->sender->Answer_Sent();
        sent->sender->Sleep(seen, 1000);
    }
}

// True when nobody has begun to answer it.
bool ThreadQueue::Withdraw(const std::shared_ptr<SentMessage> &sent) {
    std::lock_guard guard(lock_);
    return std::erase(sent_, sent) != 0;
}

// Without running procedures; the receiver's may wait for an answer in its turn, and gets none.
void ThreadQueue::Wait_For_Answer(const SentMessage &sent) {
    for (;;) {
        const std::uint32_t seen = sent.sender->Seen();
        if (sent.answered.load(std::memory_order_acquire) || !Lives()) return;
        sent.sender->Refuse_Sent();
        sent.sender->Sleep(seen, 1000);
    }
}

std::shared_ptr<SentMessage> ThreadQueue::Next_Sent() {
    std::lock_guard guard(lock_);
    if (sent_.empty()) return nullptr;
    std::shared_ptr<SentMessage> sent = std::move(sent_.front());
    sent_.pop_front();
    return sent;
}

void ThreadQueue::Refuse_Sent() {
    while (const std::shared_ptr<SentMessage> sent = Next_Sent()) {
        sent->answered.store(true, std::memory_order_release);
        sent->sender->Row().Wake();
    }
}

bool ThreadQueue::Lives() const {
    ThreadRow &row = Row();
    return row.Lives() && row.thread_id.load(std::memory_order_relaxed) == thread_id_;
}

void ThreadQueue::Answer_Sent() {
    while (const std::shared_ptr<SentMessage> sent = Next_Sent()) {
        struct Answer {
            SentMessage &sent;
            ~Answer() {
                sent.answered.store(true, std::memory_order_release);
                sent.sender->Row().Wake();
            }
        } answer{*sent};
        sent->result = Send_To(sent->window, sent->message, sent->wparam, sent->lparam);
    }
    Catch_Up_With_The_Machine(*this);
    if (const std::shared_ptr<QueueVisitor> present = visitor) present->Messages_Are_Looked_For();
}
