#include <reference_suite/components/connection/connection_component.h>

#include <reference_suite/components/component_store.h>
#include <reference_suite/components/connection/kept_connection.h>
#include <reference_suite/components/connection/value_tree.h>

#include <kelmara/foundation/string_helpers.h>

#include <cstdio>
#include <cstring>

namespace {

struct ConnectionMethod {
    const char *name;
    bool is_dialled;
};
constexpr ConnectionMethod Methods[] = {{"Modem", true}, {"ISDN", true}, {"PPPoE", true}, {"LAN", false}};

template <std::size_t Size>
std::string Text_Of_Field(const char (&field)[Size]) {
    return std::string(field, strnlen(field, Size));
}

void Write_Status(const ConnectionFacts &facts, char *out) {
    constexpr std::size_t Size = 256;
    const auto seconds = static_cast<unsigned long>((GetTickCount() - facts.since) / 1000);
    switch (facts.stage) {
    case ConnectionStage::None:
        std::snprintf(out, Size, "Not connected");
        break;
    case ConnectionStage::Dialling:
        std::snprintf(out, Size, "Dialling %.200s", facts.dialled);
        break;
    case ConnectionStage::Up:
        std::snprintf(out, Size, "Connected to %.200s for %lu seconds", facts.configuration, seconds);
    }
}

std::string Static_Configuration() {
    std::string name;
    StoredKey(Settings_Key, StoredKey::Opening::If_There).Read(Setting_Static_Configuration.code, name);
    return name;
}

} // namespace

ConnectionComponent::~ConnectionComponent() {
    Reap_Connections(0);
}

long ConnectionComponent::Create_Tree(IComplexValueInterface **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Within_Memory_Of_Suite([&]() -> long {
        *out = ValueItem::Make_Tree();
        return *out ? 0 : E_OUTOFMEMORY;
    });
}

long ConnectionComponent::Use_Method(char *method) {
    for (int i = 0; method && i < static_cast<int>(std::size(Methods)); ++i) {
        if (strcmp_ncs(Methods[i].name, method) == 0) return m_Method = i, 0;
    }
    return E_INVALIDARG;
}

bool ConnectionComponent::Is_Dialup() {
    return m_Method < 0 || Methods[m_Method].is_dialled;
}

long ConnectionComponent::Open_Board() {
    return Within_Memory_Of_Suite([&] {
        if (!m_Board) m_Board = std::make_shared<ConnectionBoard>();
        return m_Board->Open();
    });
}

// Tells the handlers of what it finds changed.
ConnectionFacts ConnectionComponent::Look() {
    ConnectionFacts facts;
    if (Open_Board() != 0 || m_Board->Look(facts) != 0 || facts.stage == m_Told) return facts;
    m_Told = facts.stage;
    char text[256];
    Write_Status(facts, text);
    AddRef(); // a handler may let go of the object
    Within_Memory_Of_Suite([&] { return m_Handlers.Tell(facts.stage, text), 0; });
    Release();
    return facts;
}

void ConnectionComponent::Get_Active_Config(char *out) {
    if (!out) return;
    *out = 0;
    const ConnectionFacts facts = Look();
    if (facts.stage == ConnectionStage::Up) std::strcpy(out, facts.configuration);
}

void ConnectionComponent::Add_Status_Handler(IConnectionHandlerInterface *handler) {
    Within_Memory_Of_Suite([&] { return m_Handlers.Add(handler), 0; });
}

void ConnectionComponent::Remove_Status_Handler(IConnectionHandlerInterface *handler) {
    m_Handlers.Remove(handler);
}

void ConnectionComponent::Get_Connected_Status_String(char *out) {
    if (out) Write_Status(Look(), out);
}

long ConnectionComponent::Connect(ConnectParams *params, bool flag) {
    if (m_Method < 0) return E_UNEXPECTED;
    if (const long result = Open_Board()) return result;
    const long result = Within_Memory_Of_Suite([&] { return Begin(params, flag); });
    Look();
    return result;
}

long ConnectionComponent::Begin(ConnectParams *params, bool wait) {
    const bool dialled = Is_Dialup();
    if (!params && dialled) return E_INVALIDARG;
    const std::string name = params ? Text_Of_Field(params->configuration_name) : Static_Configuration();
    const bool cut = params && name.size() == sizeof params->configuration_name;
    if (name.empty() || cut) return E_INVALIDARG;
    ConnectionFate fate = Read_Connection_Fate();
    if (!dialled) fate.dial_time = 0;
    const std::string number = params ? Text_Of_Field(params->first_dial_string) : std::string();
    Reap_Connections(0);
    return Make_Connection(m_Board, name.c_str(), number.c_str(), fate, wait || !dialled);
}

void ConnectionComponent::Close() {
    std::uint32_t closed = 0;
    if (Open_Board() != 0 || m_Board->Close(closed) != 0) return;
    Reap_Connections(closed);
    Look();
}

long ConnectionComponent::Get_Monitor_Events(HANDLE *connected, HANDLE *disconnected) {
    if (!connected && !disconnected) return E_INVALIDARG;
    OwnedHandle up, down;
    long result = Open_Board();
    if (result == 0 && connected) result = m_Board->Listen(ConnectionChange::Came_Up, up);
    if (result == 0 && disconnected) result = m_Board->Listen(ConnectionChange::Went_Down, down);
    if (connected) *connected = result == 0 ? up.release() : nullptr;
    if (disconnected) *disconnected = result == 0 ? down.release() : nullptr;
    return result;
}
