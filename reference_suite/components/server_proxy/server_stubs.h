#pragma once
// The suite server's side of its interfaces' calls.

#include <reference_suite/components/marshalling/stubs.h>

#include <kelmara/connectivity/component_interfaces.h>

class ServerStub final : public Stub<IServerInterface> {
  public:
    ServerStub() : Stub(IID_IServerInterface) {}

  private:
    HRESULT Dispatch(IServerInterface &server, ULONG slot, MessageReader &arguments,
                     MessageWriter &results) override;
};

class ServerSettingsStub final : public Stub<IServerSimpleAccessInterface> {
  public:
    ServerSettingsStub() : Stub(IID_IServerSimpleAccessInterface) {}

  private:
    HRESULT Dispatch(IServerSimpleAccessInterface &server, ULONG slot, MessageReader &arguments,
                     MessageWriter &results) override;
};
