#include <platform/kernel.h>
#include <platform/machine.h>

#include <mutex>

namespace {

constinit std::mutex sink_lock;
constinit DebugOutputSink installed_sink = nullptr;
constinit void *installed_context = nullptr;

} // namespace

extern "C" {

void Set_Debug_Output_Sink(DebugOutputSink sink, void *context) {
    std::lock_guard guard(sink_lock);
    installed_sink = sink;
    installed_context = context;
}

void OutputDebugStringA(LPCSTR text) {
    DebugOutputSink sink;
    void *context;
    {
        std::lock_guard guard(sink_lock);
        sink = installed_sink;
        context = installed_context;
    }
    if (sink && text) sink(text, context);
}

// Not by a raised signal: that could be ignored.
void DebugBreak() {
    asm volatile("int3");
}
}
