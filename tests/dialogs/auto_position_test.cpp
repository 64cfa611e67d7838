// Where controls and group boxes come to stand.

#include <kelmara/dialogs/window_helpers.h>

#include <tests/dialogs/layout_verbs.h>

namespace {

// --- neighbours and edges ---------------------------------------------------------------------------------

TEST_F(AutoPosition, Each_Neighbour_Flag_Measures_And_Places_In_Its_Own_Order) {
    const RECT before = {20, 20, 80, 40}, after = {50, 25, 130, 45}, narrow = {50, 25, 90, 45};
    const struct {
        long flags;
        DWORD style;
        RECT neighbour; // where it goes
        const char *place;
    } rows[] = {
        {APM_RIGHT_OF_NEIGHBOUR, 0, after, "150 20 200 40"},
        {APM_LEFT_OF_NEIGHBOUR, 0, after, "130 20 180 40"}, // at a gap of -130
        {APM_LEFT_OF_NEIGHBOUR, WS_BORDER, after, "132 20 182 40"},
        {APM_ALIGN_NEIGHBOUR_RIGHT, WS_BORDER, after, "152 20 202 40"},
        {APM_STRETCH_TO_NEIGHBOUR, 0, after, "100 20 180 40"},
        {APM_STRETCH_FROM_NEIGHBOUR, 0, narrow, "110 20 150 40"},
        {APM_MATCH_NEIGHBOUR_WIDTH, 0, narrow, "50 20 90 40"},
        {APM_GROW_TO_NEIGHBOUR_WIDTH, 0, narrow, "100 20 150 40"},
        {APM_GROW_TO_NEIGHBOUR_WIDTH, 0, after, "50 20 130 40"},
        {APM_RIGHT_OF_NEIGHBOUR | APM_GROW_TO_NEIGHBOUR_WIDTH, 0, after, "150 20 230 40"},
        {APM_LEFT_OF_NEIGHBOUR | APM_RIGHT_OF_NEIGHBOUR, 0, after, "150 20 200 40"},
        {APM_ALIGN_NEIGHBOUR_LEFT | APM_STRETCH_TO_NEIGHBOUR, 0, after, "-80 20 -30 40"},
    };
    for (const auto &row : rows) {
        Dialog dialog;
        const Child neighbour(dialog, before), control(dialog, {100, 20, 150, 40}, "", row.style);
        Layout layout(dialog);
        layout.Manage(control, row.flags, neighbour);
        Move(neighbour, row.neighbour);
        EXPECT_EQ(layout.Update_Controls(), 0);
        EXPECT_EQ(At(control), row.place) << std::hex << row.flags << " " << Text_Of(row.neighbour);
    }
}

TEST_F(AutoPosition, Edges_Are_Kept_When_The_Window_Grows) {
    const struct {
        long flags;
        DWORD style;
        const char *place; // of 10 20 60 40, by 40 and 30
    } rows[] = {
        {0, 0, "10 20 60 40"},
        {APM_KEEP_RIGHT, 0, "50 20 100 40"},
        {APM_KEEP_RIGHT | APM_KEEP_BOTTOM, WS_BORDER, "52 52 102 72"},
        {APM_LEFT_FROM_RIGHT | APM_TOP_FROM_BOTTOM, WS_BORDER, "50 50 100 70"},
        {APM_KEEP_RIGHT | APM_LEFT_FROM_RIGHT | APM_KEEP_BOTTOM | APM_TOP_FROM_BOTTOM, 0, "50 50 100 70"},
        {APM_KEEP_RIGHT | APM_RESIZE_WITH_PARENT, 0, "10 20 100 40"},
    };
    for (const auto &row : rows) {
        Dialog dialog;
        const Child control(dialog, {10, 20, 60, 40}, "", row.style);
        Layout layout(dialog);
        layout.Manage(control, row.flags);
        dialog.Resize(440, 330);
        layout.Update_Controls();
        EXPECT_EQ(At(control), row.place) << std::hex << row.flags;
    }
    Dialog framed(WS_POPUP | WS_CAPTION); // whose own edge counts for what is sized
    const Child control(framed, {10, 20, 60, 40});
    Layout layout(framed);
    layout.Manage(control, APM_KEEP_RIGHT | APM_KEEP_BOTTOM | APM_RESIZE_WITH_PARENT);
    framed.Resize(440, 330);
    layout.Update_Controls();
    EXPECT_EQ(At(control), "10 20 103 73");
}

// --- texts ------------------------------------------------------------------------------------------------

TEST_F(AutoPosition, Controls_Are_Fitted_To_Their_Texts) {
    const Dialog dialog;
    const auto text = [&](const char *of) { return static_cast<long>(Text_Width(dialog, of)); };
    const std::string cut(254, 'i'), long_text = cut + "WW";
    const long beside = 80 - text("&One");
    const struct {
        long flags;
        const char *designed, *text;
        long left, width; // of 100 to 180
    } rows[] = {
        {0, "&One", "&Another", 100, text("Another") + beside},
        {APM_KEEP_AMPERSANDS, "&One", "&Another", 100, text("&Another") + beside},
        {0, long_text.c_str(), "Short", 100, text("Short") + 20},
        {APM_NO_PADDING | APM_DEFAULT_PADDING, "&One", "Another", 100, text("Another")},
        {APM_DEFAULT_PADDING, "&One", "Another", 100, text("Another") + 20},
        {APM_NO_PADDING | APM_KEEP_MIN_WIDTH, "&One", "I", 100, 80},
        {APM_NO_PADDING, "&One", long_text.c_str(), 100, text(cut.c_str())},
        {APM_NO_PADDING | APM_CENTER_ON_FIT, "&One", "I", 140 - text("I") / 2, text("I")},
        {APM_NO_PADDING | APM_KEEP_RIGHT, "&One", "I", 180 - text("I"), text("I")},
        {APM_TEXT_FIXED, "&One", "&Another", 100, 80},
    };
    for (const auto &row : rows) {
        const Child control(dialog, {100, 20, 180, 40}, row.designed);
        const Child follower(dialog, {190, 20, 200, 40});
        Layout layout(dialog);
        layout.Manage(follower, APM_RIGHT_OF_NEIGHBOUR, control); // settled by a later sweep
        layout.Manage(control, row.flags);
        SetWindowTextA(control, row.text);
        layout.Update_Controls();
        EXPECT_EQ(Normal(control).left, row.left) << row.text;
        EXPECT_EQ(Width(control), row.width) << std::hex << row.flags << " " << row.text;
        EXPECT_EQ(Normal(follower).left, row.left + row.width + 10);
    }
    const char *const strings[] = {"I", "The widest", "Two", nullptr};
    const Child control(dialog, {100, 20, 180, 40}, "I");
    Layout layout(dialog);
    layout.Manage_Control(control, APM_WIDEST_STRING | APM_NO_PADDING, nullptr, strings);
    for (const char *each : {"Two", "An even wider text than these"}) {
        SetWindowTextA(control, each);
        layout.Update_Controls();
        EXPECT_EQ(Width(control), text("The widest"));
        EXPECT_TRUE(layout.Find_Entry(control)->m_Flags & APM_TEXT_FIXED);
    }
}

TEST_F(AutoPosition, What_Has_Not_Changed_Is_Left_Alone_And_What_Has_Is_Painted) {
    Dialog dialog;
    Child control(dialog, {10, 20, 60, 40}, "One"), marked(dialog, {10, 50, 60, 70});
    Layout layout(dialog);
    layout.Manage(control, APM_KEEP_RIGHT);
    layout.Manage(marked, APM_KEEP_RIGHT | APM_INVALIDATE_ON_MOVE);
    const auto painted = [&] {
        RECT area = {};
        return Invalid_Rectangle(dialog, &area, true) ? Text_Of(area) : "none";
    };
    const auto is_left_alone = [&] {
        control.Heard();
        layout.Update_Controls();
        return control.Heard() == "WM_GETTEXT" && painted() == "none";
    };
    painted();
    EXPECT_TRUE(is_left_alone());
    dialog.Resize(440, 300);
    painted();
    layout.Update_Controls();
    EXPECT_EQ(painted(), "50 50 100 70");
    SetWindowPos(control, nullptr, 0, 0, 30, 20, SWP_NOMOVE | SWP_NOZORDER);
    layout.Update_Controls();
    EXPECT_EQ(At(control), "70 20 100 40");
    EXPECT_EQ(painted(), "70 20 100 40");
    EXPECT_TRUE(is_left_alone());
}

// --- group boxes and centring -----------------------------------------------------------------------------

TEST_F(AutoPosition, Group_Boxes_Wrap_Their_Members_And_Follow_A_Neighbour) {
    const struct {
        long flags;
        const char *box, *member; // when the neighbour goes from 10 20 60 40 to 30 20 100 40
    } rows[] = {
        {APM_ALIGN_NEIGHBOUR_LEFT, "30 60 150 140", "40 75 130 95"},
        {APM_ALIGN_NEIGHBOUR_RIGHT, "50 60 170 140", "60 75 150 95"},
        {0, "10 60 130 140", "20 75 110 95"},
    };
    for (const auto &row : rows) {
        const Dialog dialog;
        const Child neighbour(dialog, {10, 20, 60, 40}), box(dialog, {10, 60, 130, 140});
        const Child member(dialog, {20, 75, 110, 95}), other(dialog, {20, 100, 110, 130});
        const HWND members[] = {member, other, nullptr};
        Layout layout(dialog);
        layout.Manage_GroupBox(box, row.flags, members, neighbour);
        Move(neighbour, {30, 20, 100, 40});
        for (int round = 0; round < 2; ++round) {
            layout.Update_Controls();
            EXPECT_EQ(At(box), row.box) << row.flags;
            EXPECT_EQ(At(member), row.member);
        }
        const long left = Normal(box).left, right = Normal(other).right;
        Move(other, {Normal(other).left, 100, right + 50, 150});
        layout.Update_Controls();
        EXPECT_EQ(At(box), Text_Of({left, 60, right + 70, 160})) << "around what has grown";
    }
    const Dialog dialog;
    const Child box(dialog, {11, 10, 110, 111}), member(dialog, {80, 80, 105, 105});
    const HWND members[] = {member, nullptr};
    Layout layout(dialog);
    layout.Manage_GroupBox(box, 0, members, nullptr);
    long left = 0, right = 0, bottom = 0, top = 0;
    layout.Get_GroupBox_Extremes(static_cast<GroupBoxsListEntry *>(layout.m_GroupBoxes.GetEntry(0, 0)), &left,
                                 &right, &bottom, &top);
    EXPECT_EQ(Text_Of({left, top, right, bottom}), "60 61 105 105") << "from the middle on";
    layout.Update_Controls();
    EXPECT_EQ(At(box), "11 10 110 111");
    DestroyWindow(member);
    layout.Update_Controls();
    EXPECT_EQ(At(box), "11 10 110 111") << "around nothing it stays";
}

TEST_F(AutoPosition, Children_Are_Centred_Together_And_Measured_Anew) {
    Dialog dialog;
    const Child left(dialog, {10, 20, 60, 40}), right(dialog, {70, 20, 251, 40}), inner(left, {5, 5, 9, 9});
    Layout layout(dialog);
    layout.Manage(right, APM_KEEP_RIGHT);
    EXPECT_EQ(layout.Center_Child_Controls(), 0);
    EXPECT_EQ(At(left), "80 20 130 40"); // half of 241 is 120
    EXPECT_EQ(At(right), "140 20 321 40");
    EXPECT_EQ(At(inner), "5 5 9 9");
    dialog.Resize(410, 300);
    layout.Update_Controls();
    EXPECT_EQ(At(right), "150 20 331 40");
}

} // namespace
