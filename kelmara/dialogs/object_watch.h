#pragma once
// Inside the library: whether an object is still there after it has called somebody who may destroy it.
//
//     const ObjectWatch watch(this);
//     m_Client->Write_Value(text);
//     if (!watch.Is_There()) return;
//
// Watches stand on the stack and see what their own thread destroys. The destructor of what is watched calls
// Tell_Of_End.

class ObjectWatch {
  public:
    explicit ObjectWatch(const void *object);
    ~ObjectWatch();
    ObjectWatch(const ObjectWatch &) = delete;
    ObjectWatch &operator=(const ObjectWatch &) = delete;

    bool Is_There() const { return m_Object != nullptr; }
    static void Tell_Of_End(const void *object);

  private:
    const void *m_Object;
    ObjectWatch *m_Outer;
};

/// A flag of an object that is set for a scope's length, also when a procedure throws in it or the object
/// goes.
class WatchedFlag {
  public:
    WatchedFlag(const void *object, bool &flag) : m_Watch(object), m_Flag(flag), m_Before(flag) {
        m_Flag = true;
    }
    ~WatchedFlag() {
        if (m_Watch.Is_There()) m_Flag = m_Before;
    }
    WatchedFlag(const WatchedFlag &) = delete;
    WatchedFlag &operator=(const WatchedFlag &) = delete;

    bool Is_Object_There() const { return m_Watch.Is_There(); }

  private:
    ObjectWatch m_Watch;
    bool &m_Flag;
    const bool m_Before;
};
