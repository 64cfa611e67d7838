#pragma once
// Inside the library: what the graphics calls give out goes back at the end of its scope. The thread's last
// error stays as it was.

#include <platform/gdi.h>
#include <platform/kernel.h>

template <class Handle, auto Give_Back>
class GraphicsOwner {
  public:
    /// Takes over a handle, or none.
    explicit GraphicsOwner(Handle handle) : m_Handle(handle) {}
    ~GraphicsOwner() {
        if (!m_Handle) return;
        const DWORD last_error = GetLastError();
        Give_Back(m_Handle);
        SetLastError(last_error);
    }
    GraphicsOwner(const GraphicsOwner &) = delete;
    GraphicsOwner &operator=(const GraphicsOwner &) = delete;

    Handle Get() const { return m_Handle; }
    /// The handle, which is the caller's from then on.
    Handle Hand_Over() {
        const Handle handle = m_Handle;
        m_Handle = nullptr;
        return handle;
    }

  private:
    Handle m_Handle;
};

inline int Release_Screen(HDC dc) {
    return ReleaseDC(nullptr, dc);
}

using BitmapOwner = GraphicsOwner<HBITMAP, DeleteObject>;
using MemoryContextOwner = GraphicsOwner<HDC, DeleteDC>;
using ScreenOwner = GraphicsOwner<HDC, Release_Screen>;
