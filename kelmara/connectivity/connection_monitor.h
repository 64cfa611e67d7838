#pragma once
// Inside the library: one monitor of a connection, which is a thread that waits for an event of the
// connection component and reports it.
//
// It works on handles that stand in the object that owns them. The owner's thread starts and stops; the
// monitor's thread only reads the two events, which are closed after it has been joined and not before. It
// takes no lock, and never waits for a window. A thread that has ended by itself counts as running until it
// is stopped.

#include <platform/kernel.h>
#include <platform/user.h>

class ConnectionMonitor {
  public:
    /// Of the thread, of the event that ends it and of the one that it reports; 0 where there is none yet.
    ConnectionMonitor(HANDLE &thread, HANDLE &stop_event, HANDLE &event)
        : m_Thread(thread), m_Stop_Event(stop_event), m_Event(event) {}

    bool Is_Running() const { return m_Thread; }

    /// Has the event and the one to stop by, made at first need: `ask(HANDLE *)` gets the former, 0 on
    /// success. What a failing call hands out counts as nothing.
    template <class Ask>
    bool Has_Events(Ask ask) {
        if (!m_Event && ask(&m_Event) != 0) {
            m_Event = nullptr;
            return false;
        }
        if (!m_Stop_Event) m_Stop_Event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        return m_Stop_Event;
    }
    /// A thread that cannot be had leaves the monitor stopped.
    void Start(unsigned (*routine)(void *), void *argument);
    /// Ends the thread, whatever it is busy with, and waits for it; another may be started then.
    void Stop();
    void Close_Event() { Close(m_Event); }
    void Close_Stop_Event() { Close(m_Stop_Event); }

    /// The thread's side: reports each time that the event is set, and resets it after that. What it ends
    /// with: 1, or -1 without an event. It ends by itself also when what it waits for cannot be waited for or
    /// reset, rather than report for ever. Messages of the thread are dispatched meanwhile.
    template <class Report>
    unsigned Watch(Report report) const {
        constexpr auto No_Event = static_cast<unsigned>(-1);
        if (!m_Event || m_Event == INVALID_HANDLE_VALUE) return No_Event;
        const HANDLE awaited[] = {m_Stop_Event, m_Event};
        for (;;) {
            switch (MsgWaitForMultipleObjects(2, awaited, FALSE, INFINITE, QS_ALLEVENTS)) {
            case WAIT_OBJECT_0 + 1:
                report();
                if (!ResetEvent(m_Event)) return 1;
                break;
            case WAIT_OBJECT_0 + 2:
                Dispatch_One_Message();
                break;
            default:
                return 1;
            }
        }
    }

  private:
    static void Close(HANDLE &handle);
    static void Dispatch_One_Message();

    HANDLE &m_Thread, &m_Stop_Event, &m_Event;
};
