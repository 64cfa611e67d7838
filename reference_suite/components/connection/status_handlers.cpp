#include <reference_suite/components/connection/status_handlers.h>

#include <kelmara/connectivity/owned_interface.h>

#include <algorithm>
#include <utility>

StatusHandlers::~StatusHandlers() {
    // One may remove itself as it goes.
    for (IConnectionHandlerInterface *const handler : std::exchange(m_Handlers, {})) handler->Release();
}

void StatusHandlers::Add(IConnectionHandlerInterface *handler) {
    if (!handler || std::ranges::find(m_Handlers, handler) != m_Handlers.end()) return;
    m_Handlers.push_back(handler);
    handler->AddRef();
}

void StatusHandlers::Remove(IConnectionHandlerInterface *handler) {
    if (std::erase(m_Handlers, handler) != 0) handler->Release();
}

void StatusHandlers::Tell(ConnectionStage stage, char *text) {
    std::vector<std::unique_ptr<OwnedInterface<IConnectionStatusInterface>>> told;
    for (IConnectionHandlerInterface *const handler : m_Handlers) {
        auto status = std::make_unique<OwnedInterface<IConnectionStatusInterface>>();
        if (status->Query(handler, IID_IConnectionStatusInterface) == 0) told.push_back(std::move(status));
    }
    for (const auto &status : told) (*status)->Status_Changed(static_cast<long>(stage), text);
}
