#include <kelmara/connectivity/connection_utility.h>

#include <kelmara/connectivity/component_options.h>
#include <kelmara/connectivity/connection_monitor.h>
#include <kelmara/connectivity/owned_interface.h>

#include <cstdio>
#include <cstring>
#include <utility>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // plain fields behind one table pointer
struct ConnectionUtilityLayout {
    using U = CConnectionUtility;
    static_assert(offsetof(U, m_Configuration_Name) == 4 && offsetof(U, m_Last_Dialled_Number) == 260);
    static_assert(offsetof(U, m_Configuration) == 516 && offsetof(U, m_Connection) == 520);
    static_assert(offsetof(U, m_Connect_Thread) == 524 && offsetof(U, m_Disconnect_Thread) == 528);
    static_assert(offsetof(U, m_Disconnect_Stop_Event) == 532 && offsetof(U, m_Connect_Stop_Event) == 536);
    static_assert(offsetof(U, m_Window) == 540 && offsetof(U, m_Connect_Event) == 544);
    static_assert(offsetof(U, m_Disconnect_Event) == 548);
};
#pragma GCC diagnostic pop

namespace {

template <class Interface>
void Release_And_Clear(Interface *&reference) {
    if (Interface *const held = std::exchange(reference, nullptr)) held->Release();
}

// The values stay null unless all of it succeeds.
long Reach_Configuration(OwnedInterface<IComponentStorageInterface> &storage,
                         IComponentValuesInterface *&values) {
    if (values) return storage.Query(values, IID_IComponentStorageInterface);
    if (const long result = storage.Create(CLSID_ConfigurationComponent, IID_IComponentStorageInterface))
        return result;
    OwnedInterface<IComponentValuesInterface> asked;
    const long result = asked.Query(storage.Get(), IID_IComponentValuesInterface);
    values = asked.Hand_Over();
    return result;
}

long Open_Configuration(IComponentStorageInterface &storage, const char *name) {
    ComponentLocator locator;
    if (!Fill_Locator(locator, Component_Configuration, name)) return E_INVALIDARG;
    return storage.Open_Component(&locator, 0);
}

// The connection goes when it does not take the configuration's method.
long Bind_Connection(IConnectionInterface *&connection, IComponentValuesInterface *configuration) {
    char method[256];
    Read_Option(configuration, Option_Connection_Method, method);
    if (!connection) {
        OwnedInterface<IConnectionInterface> created;
        if (const long result = created.Create(CLSID_ConnectionComponent, IID_ConnectionInterface))
            return result;
        connection = created.Hand_Over();
    }
    const long result = connection->Use_Method(method);
    if (result != 0) Release_And_Clear(connection);
    return result;
}

} // namespace

// The window is set by the start of a monitor, and read by nobody before.
CConnectionUtility::CConnectionUtility()
    : m_Configuration_Name(),
      m_Last_Dialled_Number(),
      m_Configuration(nullptr),
      m_Connection(nullptr),
      m_Connect_Thread(nullptr),
      m_Disconnect_Thread(nullptr),
      m_Disconnect_Stop_Event(nullptr),
      m_Connect_Stop_Event(nullptr),
      m_Connect_Event(nullptr),
      m_Disconnect_Event(nullptr) {}

CConnectionUtility::CConnectionUtility(const CConnectionUtility &other) = default;
CConnectionUtility &CConnectionUtility::operator=(const CConnectionUtility &other) = default;

CConnectionUtility::~CConnectionUtility() {
    Stop_Monitors_And_Close_Events();
    Connect_Monitor().Close_Stop_Event();
    Disconnect_Monitor().Close_Stop_Event();
    Release_Components();
}

long CConnectionUtility::Set_Config(const char *name) {
    char wanted[sizeof m_Configuration_Name];
    std::snprintf(wanted, sizeof wanted, "%s", name ? name : "");
    if (*m_Configuration_Name && std::strcmp(m_Configuration_Name, wanted) != 0) {
        Stop_Monitors_And_Close_Events();
        Release_Components();
    }
    std::memcpy(m_Configuration_Name, wanted, std::strlen(wanted) + 1);

    OwnedInterface<IComponentStorageInterface> storage;
    if (const long result = Reach_Configuration(storage, m_Configuration)) return result;
    long result = Open_Configuration(*storage.Get(), m_Configuration_Name);
    if (result == 0) result = Bind_Connection(m_Connection, m_Configuration);
    if (result != 0) Release_And_Clear(m_Configuration);
    return result;
}

IConnectionInterface *CConnectionUtility::Get_Connection() {
    return m_Connection;
}

void CConnectionUtility::Release_Components() {
    Release_And_Clear(m_Connection);
    Release_And_Clear(m_Configuration);
}
