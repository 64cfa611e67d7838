#pragma once
// A thread that serves: the classes that it has registered, and the objects that others use through it. Made
// with its first class; all of it happens on that thread, when it looks for messages, but for the taking in
// of what the endpoint's thread brings.

#include <platform/com/served_object.h>
#include <platform/com/server_endpoint.h>
#include <platform/user/thread_queue.h>

#include <deque>

class Apartment final : public QueueVisitor, private ServerEndpoint::Receiver {
  public:
    /// Of the calling thread. Null when the host or the machine cannot. May throw std::bad_alloc.
    static std::shared_ptr<Apartment> Begin();
    ~Apartment();
    Apartment(const Apartment &) = delete;
    Apartment &operator=(const Apartment &) = delete;

    /// E_FAIL when the machine cannot list it. May throw std::bad_alloc.
    HRESULT Register(REFCLSID clsid, IUnknown *factory, DWORD &cookie);
    HRESULT Revoke(DWORD cookie);
    /// The factory of a class that this thread has registered; null when it has not.
    IUnknown *Find(REFCLSID clsid) const;

    /// Makes the calls that have come.
    void Messages_Are_Looked_For() override;
    /// Readable when some may have.
    int News() const { return news_.Get(); }
    /// Nothing comes any more, and none of the clients waits. The objects stay.
    void End_Service() { endpoint_.reset(); }
    /// The same, and the objects are let go.
    void Close();

  private:
    struct RegisteredClass {
        CLSID clsid;
        Reference<IUnknown> factory;
    };

    explicit Apartment(std::shared_ptr<ThreadQueue> queue);
    void Take(Request request) override;
    void Some_Have_Ended() noexcept override;
    void Tell_Thread();
    bool Is_This_Threads() const;
    bool Next(Request &request);
    void Let_Ended_Go();
    void Answer(Request &request);
    HRESULT Carry_Out(Request &request, std::string &results);
    HRESULT Make_Object(const Request &request);

    const std::shared_ptr<ThreadQueue> queue_;
    FileDescriptor news_;
    std::map<DWORD, RegisteredClass> classes_; // by cookie
    std::map<std::shared_ptr<Exchange>, std::shared_ptr<ServedObject>> objects_;
    std::unique_ptr<ServerEndpoint> endpoint_;

    std::mutex lock_; // of what follows
    std::deque<Request> requests_;
    bool some_have_ended_ = false;
};
