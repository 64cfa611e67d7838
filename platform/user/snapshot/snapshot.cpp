#include <platform/machine.h>
#include <platform/user/controls/combo_box.h>
#include <platform/user/snapshot/frame_picture.h>
#include <platform/user/thread_queue.h>

#include <algorithm>
#include <cstdio>

namespace {

std::vector<WindowPointer> Visible_Children(const Window &window) {
    std::vector<WindowPointer> found;
    for (const Window *child : window.children) {
        if (child->Is(WS_VISIBLE)) found.push_back(Find_Window(child->handle));
    }
    return found;
}

// Lists that are down lie over everything else.
struct DroppedList {
    WindowPointer window;
    RECT place; // on the screen
};

class Drawing {
  public:
    Drawing(const WindowPointer &window, SIZE size) : picture_(size) {
        Draw(window, {0, 0, size.cx, size.cy});
    }

    void Draw(const WindowPointer &window, const RECT &place);
    const std::vector<DroppedList> &Dropped() const { return dropped_; }
    Picture &Result() { return picture_; }

  private:
    void Draw_Client(const WindowPointer &window, const FrameFacts &facts);
    void Note_Dropped_List(const ComboBox &combo);

    Picture picture_;
    std::vector<DroppedList> dropped_;
};

void Drawing::Note_Dropped_List(const ComboBox &combo) {
    DroppedList list = {Find_Window(combo.List_Part()), {}};
    if (combo.Is_Dropped() && list.window && GetWindowRect(combo.List_Part(), &list.place))
        dropped_.push_back(list);
}

void Drawing::Draw_Client(const WindowPointer &window, const FrameFacts &facts) {
    const RECT &client = facts.client;
    const RECT whole = {0, 0, client.right - client.left, client.bottom - client.top};
    if (whole.right <= 0 || whole.bottom <= 0) return;
    picture_.Enter(client);
    const auto *control = dynamic_cast<const Control *>(window->contents.get());
    if (control)
        control->Draw(picture_);
    else if (facts.is_child)
        picture_.Fill(whole, Colour_Face);
    if (const auto *combo = dynamic_cast<const ComboBox *>(control)) Note_Dropped_List(*combo);
    std::vector<WindowPointer> children;
    {
        const TreeLock lock;
        children = Visible_Children(*window);
    }
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        RECT place;
        {
            const TreeLock lock;
            place = (*child)->rectangle;
        }
        Draw(*child, place);
    }
    picture_.Leave();
}

void Drawing::Draw(const WindowPointer &window, const RECT &place) {
    FrameFacts facts;
    std::string title;
    {
        const TreeLock lock;
        facts = Facts_Of(*window);
        title = window->text;
    }
    if (facts.size.cx <= 0 || facts.size.cy <= 0) return;
    picture_.Enter(place);
    Draw_Frame(picture_, facts, title);
    Draw_Client(window, facts);
    picture_.Leave();
}

SIZE Size_Of(const RECT &r) {
    return {r.right - r.left, r.bottom - r.top};
}

// The picture is as large as the window, and larger where a list hangs out of it.
std::string Draw(const WindowPointer &window) {
    RECT place = {};
    GetWindowRect(window->handle, &place);
    SIZE size = Size_Of(place);
    const Drawing trial(window, size);
    for (const DroppedList &list : trial.Dropped())
        size.cy = std::max(size.cy, list.place.bottom - place.top);
    Drawing drawing(window, size);
    for (const DroppedList &list : trial.Dropped()) {
        const RECT &r = list.place;
        drawing.Draw(list.window,
                     {r.left - place.left, r.top - place.top, r.right - place.left, r.bottom - place.top});
    }
    return drawing.Result().Finished();
}

long Write(const std::string &svg, const char *path) {
    std::FILE *file = std::fopen(path, "wb");
    if (!file) return ERROR_PATH_NOT_FOUND;
    const bool written = std::fwrite(svg.data(), 1, svg.size(), file) == svg.size();
    return std::fclose(file) == 0 && written ? NO_ERROR : ERROR_WRITE_FAULT;
}

} // namespace

extern "C" bool Snapshot_Window(HWND handle, const char *host_path) {
    return Succeed_Or_Tell(Code_Of([&]() -> long {
        if (!host_path) return ERROR_INVALID_PARAMETER;
        const WindowPointer window = Find_Window_Or_Tell(handle);
        if (!window) return static_cast<long>(GetLastError());
        if (!window->queue || !window->queue->Is_Own()) return ERROR_ACCESS_DENIED;
        return Write(Draw(window), host_path);
    }));
}
