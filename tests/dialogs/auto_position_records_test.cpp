// Registering and releasing, and layouts out of the common run.

#include <tests/dialogs/layout_verbs.h>
#include <tests/support/library_heap.h>
#include <tests/support/test_memory.h>

#include <climits>

namespace {

TEST_F(AutoPosition, What_Cannot_Be_Registered_Is_Refused) {
    const NoLeak no_leak;
    const Dialog dialog;
    const Child control(dialog, {10, 20, 60, 40}, "", 0, {}, 7);
    const HWND members[] = {control, nullptr}, nobody[] = {nullptr};
    const int ids[] = {7, 99, 7, 0}, no_ids[] = {99, 7, 0};
    Layout layout(nullptr);
    for (const long result :
         {layout.Manage(control, 0), layout.Manage_Control(7, 0, 0, nullptr),
          layout.Manage_GroupBox(control, 0, members, nullptr), layout.Manage_GroupBox(7, 0, ids, 0),
          layout.Update_Controls(), layout.Center_Child_Controls()})
        EXPECT_EQ(result, E_UNEXPECTED);
    EXPECT_EQ(layout.Release_Control(7), ERROR_NOT_FOUND);
    EXPECT_EQ(layout.Initialize(dialog), 0);
    const std::vector<long> refused = {layout.Manage(nullptr, 0),
                                       layout.Manage(control, APM_WIDEST_STRING),
                                       layout.Manage_Control(8, 0, 0, nullptr),
                                       layout.Manage_Control(7, 0, 8, nullptr),
                                       layout.Manage_GroupBox(nullptr, 0, members, nullptr),
                                       layout.Manage_GroupBox(control, 0, nullptr, nullptr),
                                       layout.Manage_GroupBox(control, 0, nobody, nullptr),
                                       layout.Manage_GroupBox(7, 0, nullptr, 0),
                                       layout.Manage_GroupBox(7, 0, no_ids, 0),
                                       layout.Manage_GroupBox(8, 0, ids, 0),
                                       layout.Manage_GroupBox(7, 0, ids, 8)};
    EXPECT_EQ(refused, std::vector<long>(refused.size(), E_INVALIDARG));
    EXPECT_EQ(layout.m_Controls.Entries(0) + layout.m_GroupBoxes.Entries(0), 0);

    EXPECT_EQ(layout.Manage_Control(7, 0, 7, nullptr), 0);
    EXPECT_EQ(layout.Find_Entry(control)->m_Neighbour, HWND(control));
    EXPECT_EQ(layout.Release_Control(8), ERROR_NOT_FOUND);
    EXPECT_EQ(layout.Release_Control(7), 0);
    EXPECT_EQ(layout.Release_Control(control), ERROR_NOT_FOUND);
    int many[41] = {};
    std::fill_n(many, 40, 7);
    EXPECT_EQ(layout.Manage_GroupBox(7, 0, ids, 7), 0);
    EXPECT_EQ(layout.Manage_GroupBox(7, 0, many, 0), 0);
    for (const long members_taken : {1, 31}) {
        auto *const group = static_cast<GroupBoxsListEntry *>(layout.m_GroupBoxes.Pop(0));
        EXPECT_EQ(group->m_Members.Entries(0), members_taken);
        layout.m_GroupBoxes.Add(group, 0);
    }
}

TEST_F(AutoPosition, Without_Memory_Nothing_Is_Registered) {
    const NoLeak no_leak;
    const Dialog dialog;
    const Child control(dialog, {10, 20, 60, 40});
    const HWND members[] = {control, nullptr};
    Layout layout(dialog);
    {
        const FailingMemory failing(1, true);
        EXPECT_EQ(layout.Manage(control, 0), E_OUTOFMEMORY);
        EXPECT_EQ(layout.Manage_GroupBox(control, 0, members, nullptr), E_OUTOFMEMORY);
    }
    LibraryHeap heap; // where the lists' items are
    heap.Fail(1, true);
    long result = 0;
    while (result == 0) result = layout.Manage_GroupBox(control, 0, members, nullptr);
    EXPECT_EQ(result, E_OUTOFMEMORY);
    for (result = 0; result == 0;) result = layout.Manage(control, 0);
    EXPECT_EQ(result, E_OUTOFMEMORY);
    EXPECT_EQ(layout.Update_Controls(), 0);
}

TEST_F(AutoPosition, Long_Chains_Settle_And_What_Never_Settles_Ends) {
    Dialog dialog;
    constexpr int Length = 90;
    std::vector<std::unique_ptr<Child>> chain;
    for (int i = 0; i < Length; ++i)
        chain.push_back(std::make_unique<Child>(dialog, RECT{i * 10, 20, i * 10 + 8, 40}));
    Layout layout(dialog);
    for (int i = Length - 1; i > 0; --i) layout.Manage(*chain[i], APM_RIGHT_OF_NEIGHBOUR, *chain[i - 1]);
    Move(*chain[0], {5, 20, 20, 40});
    layout.Update_Controls();
    EXPECT_EQ(At(*chain.back()), "902 20 910 40") << "registered before their neighbours";

    int width = 50;
    const Child restless(dialog, {10, 20, 60, 40}, "", 0,
                         [&](HWND, UINT message, WPARAM, LPARAM lparam) -> std::optional<LRESULT> {
                             if (message != WM_WINDOWPOSCHANGING) return std::nullopt;
                             auto &wanted = *reinterpret_cast<WINDOWPOS *>(lparam);
                             wanted.flags &= ~SWP_NOSIZE;
                             wanted.cx = width = 101 - width;
                             return 0;
                         });
    layout.Manage(restless, 0);
    SetWindowTextA(restless, "Restless");
    EXPECT_EQ(layout.Update_Controls(), 0);
}

TEST_F(AutoPosition, Cycles_Missing_Neighbours_And_Extreme_Numbers_End_Somewhere) {
    Dialog dialog;
    const Child one(dialog, {10, 20, 60, 40}, "One"), two(dialog, {70, 20, 120, 40});
    const Child bare(dialog, {9, 9, 20, 20}), left(dialog, {100, 50, 150, 70});
    Layout layout(dialog);
    layout.Manage(one, APM_RIGHT_OF_NEIGHBOUR, two);
    layout.Manage(two, APM_RIGHT_OF_NEIGHBOUR, one);
    layout.Manage(bare, APM_MATCH_NEIGHBOUR_WIDTH);
    layout.Manage(left, APM_RIGHT_OF_NEIGHBOUR, Child(dialog, {20, 20, 80, 40})); // which is gone then
    Move(two, {75, 20, 125, 40});
    Move(bare, {9, 9, 21, 20});
    EXPECT_EQ(layout.Update_Controls(), 0);
    EXPECT_EQ(At(bare), "0 9 0 20") << "against a neighbour of zeroes";
    EXPECT_EQ(At(left), "20 50 70 70");
    for (const long flags : {0x40, 0x20, 0x200, 0x400, 0x800, 0x1000, 0x800006, 0x18, 0x200006}) {
        for (const long extreme : {LONG_MAX, LONG_MIN}) {
            ControlsListEntry &entry = *layout.Find_Entry(one);
            entry.m_Flags = flags;
            entry.m_NeighbourGap = entry.m_RightOffset = entry.m_BottomOffset = entry.m_Padding = extreme;
            entry.m_Text[0] ^= 1;
            dialog.Resize(flags % 400, 300);
            EXPECT_EQ(layout.Update_Controls(), 0);
        }
    }
}

TEST_F(AutoPosition, Procedures_May_Release_Register_And_Destroy_While_Their_Windows_Move) {
    const NoLeak no_leak;
    Dialog dialog;
    Layout layout(dialog);
    const Child last(dialog, {10, 80, 60, 90}, "Last"), late(dialog, {10, 100, 60, 110});
    const Child doomed(dialog, {10, 60, 60, 70});
    const Child control(dialog, {10, 20, 60, 40}, "", 0,
                        [&](HWND window, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
                            if (message != WM_MOVE) return std::nullopt;
                            EXPECT_EQ(layout.Release_Control(window), layout.Find_Entry(last) ? 0 : 1168);
                            if (layout.Release_Control(last) == 0) layout.Manage(late, APM_KEEP_RIGHT);
                            DestroyWindow(doomed);
                            layout.Update_Controls();
                            return 0;
                        });
    layout.Manage(control, APM_KEEP_RIGHT);
    layout.Manage(last, APM_KEEP_RIGHT);
    layout.Manage(doomed, APM_KEEP_RIGHT, control);
    dialog.Resize(440, 300);
    EXPECT_EQ(layout.Update_Controls(), 0);
    EXPECT_EQ(At(control), "50 20 100 40");
    EXPECT_EQ(At(last), "10 80 60 90");
    EXPECT_EQ(layout.m_Controls.Entries(0), 2) << "the destroyed one and the late one";
    EXPECT_EQ(layout.Release_Control(doomed), 0);
    DestroyWindow(dialog);
    EXPECT_EQ(layout.Update_Controls(), 0) << "without its windows";
}

} // namespace
