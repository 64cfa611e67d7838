#include <tools/tables/columns.h>
#include <tools/tables/machine_view.h>
#include <tools/tables/shared_images.h>
#include <tools/tables/views.h>

#include <kelmara/shared_state/instances.h>

#include <platform/window_constants.h>

#include <algorithm>
#include <cstdio>

namespace tools {

namespace {

unsigned long Number_Of(HWND window) {
    return reinterpret_cast<unsigned long>(window);
}

std::string Handle_Text(unsigned long handle) {
    char text[16];
    std::snprintf(text, sizeof text, "%08lx", handle);
    return text;
}

std::string State_Of(const MachineTopWindow &window) {
    std::string state = window.state & WS_VISIBLE ? "visible" : "hidden";
    if (window.state & WS_MINIMIZE) state += " iconic";
    if (window.state & WS_MAXIMIZE) state += " zoomed";
    if (window.foreground) state += " foreground";
    return state;
}

/// An instance with the window that it tells of; null when that is gone.
struct LiveInstance {
    Instance instance;
    const MachineTopWindow *window;

    const char *State() const {
        if (instance.window == 0) return "unfinished";
        if (window == nullptr) return "gone";
        return instance.title == std::string(window->title).substr(0, 254) ? "running" : "other title";
    }
};

LiveInstance Live(const Instance &instance, const std::vector<MachineTopWindow> &windows) {
    const auto found = std::find_if(windows.begin(), windows.end(), [&](const MachineTopWindow &each) {
        return Number_Of(each.window) == instance.window;
    });
    return {instance, found == windows.end() ? nullptr : &*found};
}

Json Json_Of(const LiveInstance &live) {
    return {{"key", Utf8_Of(live.instance.key)},
            {"subkey", Utf8_Of(live.instance.subkey)},
            {"title", Utf8_Of(live.instance.title)},
            {"window", live.instance.window},
            {"process", live.window != nullptr ? Json(live.window->process_id) : Json()},
            {"state", live.State()}};
}

Json Json_Of(const MachineTopWindow &window) {
    return {{"window", Number_Of(window.window)},
            {"process", window.process_id},
            {"program", Host_Text(Program_Of(window.process_id))},
            {"class", Utf8_Of(window.window_class)},
            {"title", Utf8_Of(window.title)},
            {"visible", (window.state & WS_VISIBLE) != 0},
            {"iconic", (window.state & WS_MINIMIZE) != 0},
            {"zoomed", (window.state & WS_MAXIMIZE) != 0},
            {"foreground", window.foreground != FALSE}};
}

} // namespace

View Look_At_Instances(const std::string &name) {
    View view;
    view.json = Json::array();
    Columns columns({"key", "subkey", "state", "window", "process", "title"});
    const auto seen =
        See_Mapping(Instance_Block_Name, sizeof(InstanceTable), [](const std::string &) { return false; });
    const std::vector<MachineTopWindow> windows = Top_Windows();
    for (const Instance &instance : seen ? Read_Instances(seen->bytes).instances : std::vector<Instance>()) {
        if (!name.empty() && instance.key != name) continue;
        const LiveInstance live = Live(instance, windows);
        columns.Add({instance.key, instance.subkey, live.State(), Handle_Text(instance.window),
                     live.window != nullptr ? Programs_Of({live.window->process_id}) : "", instance.title});
        view.json.push_back(Json_Of(live));
    }
    if (columns.Is_Empty() && !name.empty()) view.missing = name + ": no record with this key";
    view.text = columns.Is_Empty() ? "no program has registered\n" : columns.Text();
    return view;
}

View Look_At_Windows() {
    View view;
    view.json = Json::array();
    Columns columns({"window", "process", "state", "class", "title"});
    for (const MachineTopWindow &window : Top_Windows()) {
        columns.Add({Handle_Text(Number_Of(window.window)), Programs_Of({window.process_id}),
                     State_Of(window), window.window_class, window.title});
        view.json.push_back(Json_Of(window));
    }
    view.text = columns.Is_Empty() ? "no program has a window\n" : columns.Text();
    return view;
}

} // namespace tools
