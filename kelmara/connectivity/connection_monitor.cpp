#include <kelmara/connectivity/connection_monitor.h>

#include <kelmara/connectivity/connection_utility.h>
#include <kelmara/shared_state/log.h>

#include <platform/runtime.h>

#include <atomic>
#include <utility>

void ConnectionMonitor::Start(unsigned (*routine)(void *), void *argument) {
    m_Thread = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, routine, argument, 0, nullptr));
}

void ConnectionMonitor::Stop() {
    if (!m_Thread) return;
    SetEvent(m_Stop_Event);
    WaitForSingleObject(m_Thread, INFINITE);
    Close(m_Thread);
    ResetEvent(m_Stop_Event);
}

void ConnectionMonitor::Close(HANDLE &handle) {
    if (handle) CloseHandle(std::exchange(handle, nullptr));
}

void ConnectionMonitor::Dispatch_One_Message() {
    MSG message;
    // Without waiting: the one that was there may have gone with its window.
    if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
}

// --- the two monitors of a connection ---------------------------------------------------------------------

ConnectionMonitor CConnectionUtility::Connect_Monitor() {
    return {m_Connect_Thread, m_Connect_Stop_Event, m_Connect_Event};
}

ConnectionMonitor CConnectionUtility::Disconnect_Monitor() {
    return {m_Disconnect_Thread, m_Disconnect_Stop_Event, m_Disconnect_Event};
}

void CConnectionUtility::Monitor_Connections(HWND window) {
    ConnectionMonitor monitor = Connect_Monitor();
    if (monitor.Is_Running()) return;
    Debug_Log_Entry("Starting Connection Monitor");
    const bool ready = monitor.Has_Events([this](HANDLE *event) {
        return m_Connection ? m_Connection->Get_Monitor_Events(event, nullptr) : E_UNEXPECTED;
    });
    if (!ready) return;
    Set_Window(window);
    monitor.Start(
        [](void *object) { return Connect_Monitor_Thread(static_cast<CConnectionUtility *>(object)); }, this);
}

void CConnectionUtility::Monitor_Disconnections(HWND window) {
    ConnectionMonitor monitor = Disconnect_Monitor();
    if (monitor.Is_Running()) return;
    Debug_Log_Entry("Starting Disconnection Monitor");
    const bool ready = monitor.Has_Events([this](HANDLE *event) {
        return m_Connection ? m_Connection->Get_Monitor_Events(nullptr, event) : E_UNEXPECTED;
    });
    if (!ready) return;
    Set_Window(window);
    monitor.Start(
        [](void *object) { return Disconnect_Monitor_Thread(static_cast<CConnectionUtility *>(object)); },
        this);
}

unsigned int CConnectionUtility::Connect_Monitor_Thread(CConnectionUtility *utility) {
    return utility->Connect_Monitor().Watch([utility] { utility->Handle_Connection_Event(true); });
}

unsigned int CConnectionUtility::Disconnect_Monitor_Thread(CConnectionUtility *utility) {
    return utility->Disconnect_Monitor().Watch([utility] { utility->Handle_Connection_Event(false); });
}

// The other monitor's thread may read the window at that moment.
void CConnectionUtility::Set_Window(HWND window) {
    std::atomic_ref(m_Window).store(window, std::memory_order_relaxed);
}

void CConnectionUtility::Handle_Connection_Event(bool connected) {
    const HWND window = std::atomic_ref(m_Window).load(std::memory_order_relaxed);
    PostMessageA(window, Connection_Message, connected, 0);
}

void CConnectionUtility::Stop_Connection_Monitor() {
    Connect_Monitor().Stop();
}

void CConnectionUtility::Stop_Disconnection_Monitor() {
    Disconnect_Monitor().Stop();
}

void CConnectionUtility::Stop_Monitors_And_Close_Events() {
    Stop_Connection_Monitor();
    Stop_Disconnection_Monitor();
    Connect_Monitor().Close_Event();
    Disconnect_Monitor().Close_Event();
}
