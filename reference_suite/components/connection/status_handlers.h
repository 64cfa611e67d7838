#pragma once
// Who is told of a connection object's state: the handlers that were added to it, through an interface of
// their own that the component asks them for. A handler without it is kept and told nothing.
//
// Handlers are called on the thread of the object, in the middle of a call of it that finds the state
// changed, and may call the object back, to add and remove handlers too.

#include <reference_suite/components/connection/connection_board.h>

#include <kelmara/connectivity/component_interfaces.h>

#include <vector>

inline constexpr GUID IID_IConnectionStatusInterface = {
    0x8C1F5A60, 0x3B7E, 0x4E0D, {0x9A, 0x41, 0x52, 0x7B, 0x10, 0x6D, 0xE3, 0x01}};

class IConnectionStatusInterface : public IUnknown {
  public:
    /// `text` is the status string, valid during the call.
    virtual void Status_Changed(long stage, char *text) = 0;

  protected:
    ~IConnectionStatusInterface() = default;
};

class StatusHandlers {
  public:
    StatusHandlers() = default;
    ~StatusHandlers();
    StatusHandlers(const StatusHandlers &) = delete;
    StatusHandlers &operator=(const StatusHandlers &) = delete;

    /// A reference is held until it is removed. Null, and one that is there, are ignored.
    void Add(IConnectionHandlerInterface *handler);
    void Remove(IConnectionHandlerInterface *handler);
    /// Tells all that are there as it begins.
    void Tell(ConnectionStage stage, char *text);

  private:
    std::vector<IConnectionHandlerInterface *> m_Handlers;
};
