#pragma once
// Inside the library: tells the exit routine of a shared thing whether a call still uses it.
//
//     constinit CallsUnderWay calls;
//     ...
//     const CallsUnderWay::Call call(calls);          // first in each call; then look whether it is there
//
// The exit routine takes away what leads to the thing, and lets the thing itself go only if Are_Over says so.

#include <platform/kernel.h>

#include <atomic>

class CallsUnderWay {
  public:
    class Call {
      public:
        explicit Call(CallsUnderWay &all) : m_All(all) { ++m_All.m_Count; }
        ~Call() { --m_All.m_Count; }
        Call(const Call &) = delete;
        Call &operator=(const Call &) = delete;

      private:
        CallsUnderWay &m_All;
    };

    constexpr CallsUnderWay() = default;

    /// For a call itself: whether there is no other.
    bool Is_Only_One() const { return m_Count == 1; }
    /// Whether there is none any more besides `own` ones, within `milliseconds`.
    bool Are_Over(DWORD milliseconds, long own = 0) const {
        const DWORD start = GetTickCount();
        while (m_Count != own) {
            if (GetTickCount() - start >= milliseconds) return false;
            Sleep(1);
        }
        return true;
    }

  private:
    std::atomic<long> m_Count{0};
};
