// What it costs to lay a dialog out anew: after a change of its size, and when nothing has changed. The time
// is to grow with the number of controls, not with its square.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/dialogs/auto_position.h>

#include <platform/user.h>

#include <string>
#include <vector>

namespace {

constexpr int Chain_Length = 10;

/// Rows of controls of which the first keeps its distance from the right edge, and each other follows the one
/// before it.
class Dialog {
  public:
    explicit Dialog(int count) {
        for (int i = 0; i < count; ++i) {
            const int column = i % Chain_Length, row = i / Chain_Length;
            controls_.push_back(CreateWindowExA(0, "Static", ("Control " + std::to_string(i)).c_str(),
                                                WS_CHILD | WS_VISIBLE, 1900 - column * 100, row * 20, 90, 18,
                                                window_, nullptr, nullptr, nullptr));
        }
        layout_.Initialize(window_);
        for (int i = 0; i < count; ++i) {
            const bool first = i % Chain_Length == 0;
            layout_.Manage_Control(controls_[i], first ? APM_KEEP_RIGHT : APM_LEFT_OF_NEIGHBOUR,
                                   first ? nullptr : controls_[i - 1], nullptr);
        }
    }
    ~Dialog() { DestroyWindow(window_); }

    void Resize() {
        width_ = width_ == 2000 ? 2040 : 2000;
        SetWindowPos(window_, nullptr, 0, 0, width_, 900, SWP_NOMOVE | SWP_NOZORDER);
    }
    void Update() { layout_.Update_Controls(); }
    /// What a sweep reads of each control, by the machine's calls.
    void Read() {
        char text[256];
        WINDOWPLACEMENT place = {};
        place.length = sizeof place;
        RECT client;
        for (std::size_t i = 0; i < controls_.size(); ++i) {
            GetWindowTextA(controls_[i], text, sizeof text);
            if (i % Chain_Length) GetWindowPlacement(controls_[i - 1], &place);
            GetWindowPlacement(controls_[i], &place);
            GetClientRect(controls_[i], &client);
        }
    }

  private:
    HWND window_ =
        CreateWindowExA(0, "#32770", "", WS_POPUP, 0, 0, 2000, 900, nullptr, nullptr, nullptr, nullptr);
    std::vector<HWND> controls_;
    CAutoPositionManager layout_;
    int width_ = 2000;
};

void Measure_Growth() {
    measure::Growth_Heading("auto position");
    measure::Growth resized("n controls laid out after a resize", 1.15),
        same("n controls, nothing changed", 1.15);
    for (const long size : measure::Sizes(1000)) {
        Dialog dialog(static_cast<int>(size));
        resized.At(size, [&] {
            dialog.Resize();
            dialog.Update();
        });
        same.At(size, [&] { dialog.Update(); });
    }
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Use_Plain_Memory();
    Measure_Growth();
    measure::Heading("auto position", "each control read");
    Dialog dialog(200);
    measure::Compare(
        "200 controls, nothing changed", [&] { dialog.Update(); }, [&] { dialog.Read(); }, 1.5);
    return 0;
}
