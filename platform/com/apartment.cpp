#include <platform/com/apartment.h>

#include <platform/com/class_keys.h>
#include <platform/com/com_thread.h>

#include <algorithm>
#include <exception>
#include <sys/eventfd.h>

namespace {

constinit std::atomic<DWORD> last_cookie{0};

} // namespace

Apartment::Apartment(std::shared_ptr<ThreadQueue> queue)
    : queue_(std::move(queue)), news_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

std::shared_ptr<Apartment> Apartment::Begin() {
    std::shared_ptr<ThreadQueue> queue = ThreadQueue::Own();
    if (!queue) return nullptr;
    const std::shared_ptr<Apartment> apartment(new Apartment(std::move(queue)));
    apartment->endpoint_ = ServerEndpoint::Start(*apartment);
    if (!apartment->news_ || !apartment->endpoint_) return nullptr;
    apartment->queue_->visitor = apartment;
    return apartment;
}

Apartment::~Apartment() {
    Close();
}

void Apartment::Close() {
    End_Service();
    if (queue_->visitor.get() == this) queue_->visitor.reset();
    {
        const std::lock_guard guard(lock_);
        requests_.clear();
    }
    std::exchange(objects_, {}).clear();
    std::exchange(classes_, {}).clear();
}

HRESULT Apartment::Register(REFCLSID clsid, IUnknown *factory, DWORD &cookie) {
    if (!endpoint_) return E_UNEXPECTED;
    const DWORD fresh = ++last_cookie;
    const auto place =
        classes_.try_emplace(fresh, RegisteredClass{clsid, Reference<IUnknown>::Another(factory)}).first;
    const auto list = [&] {
        std::shared_ptr<ListedClass> listed;
        const HRESULT result = ListedClass::List(clsid, listed);
        if (listed) endpoint_->Listen(fresh, listed);
        return result;
    };
    const HRESULT result = Result_Within_Memory(list);
    if (result < 0) return classes_.erase(place), result;
    cookie = fresh;
    return S_OK;
}

HRESULT Apartment::Revoke(DWORD cookie) {
    const auto gone = classes_.extract(cookie);
    if (gone.empty()) return CO_E_OBJNOTREG;
    if (endpoint_) endpoint_->Stop_Listening(cookie);
    return S_OK;
}

IUnknown *Apartment::Find(REFCLSID clsid) const {
    for (const auto &[cookie, registered] : classes_) {
        if (IsEqualGUID(registered.clsid, clsid)) return registered.factory.Get();
    }
    return nullptr;
}

void Apartment::Take(Request request) {
    {
        const std::lock_guard guard(lock_);
        requests_.push_back(std::move(request));
    }
    Tell_Thread();
}

void Apartment::Some_Have_Ended() noexcept {
    {
        const std::lock_guard guard(lock_);
        some_have_ended_ = true;
    }
    Tell_Thread();
}

void Apartment::Tell_Thread() {
    eventfd_write(news_.Get(), 1);
    queue_->Wake();
}

// Not in a child that was forked within a call: what waits there is the parent's to answer.
bool Apartment::Is_This_Threads() const {
    return Own_Apartment().get() == this;
}

bool Apartment::Next(Request &request) {
    const std::lock_guard guard(lock_);
    if (requests_.empty()) return false;
    request = std::move(requests_.front());
    requests_.pop_front();
    if (!requests_.empty()) eventfd_write(news_.Get(), 1); // for whoever waits in the call that comes now
    return true;
}

void Apartment::Let_Ended_Go() {
    {
        const std::lock_guard guard(lock_);
        if (!std::exchange(some_have_ended_, false)) return;
    }
    // One at a time, with the map whole meanwhile: an object's code may look for messages.
    const auto has_ended = [](const auto &each) { return each.first->ended.load(std::memory_order_acquire); };
    for (;;) {
        const auto ended = std::find_if(objects_.begin(), objects_.end(), has_ended);
        if (ended == objects_.end()) return;
        const auto gone = objects_.extract(ended);
    }
}

void Apartment::Messages_Are_Looked_For() {
    if (!Is_This_Threads()) return;
    const std::shared_ptr<QueueVisitor> kept = queue_->visitor; // a call may close it
    eventfd_t count;
    eventfd_read(news_.Get(), &count);
    std::size_t
        there; // no more than that, or clients without a pause would keep the thread from its messages
    {
        const std::lock_guard guard(lock_);
        there = requests_.size();
    }
    for (Request request; there > 0 && Is_This_Threads() && Next(request); --there) Answer(request);
    if (Is_This_Threads()) Let_Ended_Go();
}

void Apartment::Answer(Request &request) {
    Exchange &exchange = *request.exchange;
    if (exchange.ended.load(std::memory_order_acquire)) return;
    Frame answer;
    answer.header.kind = FrameKind::Answer;
    HRESULT result = RPC_E_SERVERFAULT;
    try {
        result = Carry_Out(request, answer.body);
    } catch (const std::bad_alloc &) {
        result = E_OUTOFMEMORY;
    } catch (...) {
        if (!std::current_exception()) throw; // no exception: the thread ends, and with it what it serves
    }
    if (!Is_This_Threads()) return;
    if (result < 0) answer.body.clear();
    answer.header.result = result;
    exchange.answer = std::move(answer);
    if (endpoint_) endpoint_->Pass_On(exchange);
}

HRESULT Apartment::Carry_Out(Request &request, std::string &results) {
    if (request.frame.header.kind == FrameKind::Create) return Make_Object(request);
    const auto found = objects_.find(request.exchange);
    if (found == objects_.end()) return RPC_E_DISCONNECTED;
    const std::shared_ptr<ServedObject> object = found->second; // its client may end meanwhile
    if (request.frame.header.kind == FrameKind::Query) return object->Query(request.frame.header.iid);
    return object->Invoke(request.frame.header, request.frame.body, results);
}

HRESULT Apartment::Make_Object(const Request &request) {
    const auto registered = classes_.find(request.class_cookie);
    if (registered == classes_.end()) return RPC_E_DISCONNECTED; // revoked since the client connected
    if (objects_.contains(request.exchange)) return RPC_E_INVALID_DATA;
    const Reference<IUnknown> factory = Reference<IUnknown>::Another(registered->second.factory.Get());
    std::shared_ptr<ServedObject> made;
    const HRESULT result = ServedObject::Make(factory.Get(), request.frame.header.iid, made);
    if (result < 0) return result;
    if (!request.exchange->ended.load(std::memory_order_acquire))
        objects_.emplace(request.exchange, std::move(made));
    return S_OK;
}
