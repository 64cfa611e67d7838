#pragma once
// Keeps the controls of a window laid out while their texts and the window's size change: controls fit their
// texts, keep their distance from an edge of the window, follow a neighbour, and group boxes wrap what is in
// them.
//
//     CAutoPositionManager layout;
//     layout.Initialize(dialog);                                       // in its designed state
//     layout.Manage_Control(Ok_Button, APM_KEEP_RIGHT | APM_KEEP_BOTTOM, 0, nullptr);
//     layout.Manage_Control(Name_Edit, APM_RIGHT_OF_NEIGHBOUR, Name_Label, nullptr);
//     beat.Localize_Dialog(dialog);
//     layout.Update_Controls();                                        // and again with each WM_SIZE
//
// What is to be kept is measured when a control is registered. Windows may be destroyed before the manager or
// after it: one that is gone is left in peace, and a neighbour that is gone counts as a rectangle of zeroes.
// A group box wraps the members that are left, and stays when there are none. The manager is used on the
// thread that owns the window, and lives until its operations have returned; the procedures of the windows
// may register and release controls while it moves them. Coordinates wrap at 32 bits. A copy shares the
// records: of the two only one may be changed or destroyed.

#include <kelmara/containers/list.h>

#include <platform/user.h>

// --- the flag word ----------------------------------------------------------------------------------------

// Of the flags that need a neighbour the first one acts, in this order, but 0x40 goes before 0x20. Which of
// them says what gap is measured goes by another order: 0x40, 0x20, 0x800, 0x1000, 0x200, 0x400.
inline constexpr long APM_KEEP_BOTTOM = 0x2;         // its bottom edge keeps its distance from the window's
inline constexpr long APM_KEEP_RIGHT = 0x4;          // its right edge from the right edge
inline constexpr long APM_LEFT_FROM_RIGHT = 0x8;     // its left edge from the right edge, without KEEP_RIGHT
inline constexpr long APM_TOP_FROM_BOTTOM = 0x10;    // its top edge from the bottom edge, without KEEP_BOTTOM
inline constexpr long APM_LEFT_OF_NEIGHBOUR = 0x20;  // stands to its left, at the measured gap
inline constexpr long APM_RIGHT_OF_NEIGHBOUR = 0x40; // stands to its right, at the measured gap
inline constexpr long APM_ALIGN_NEIGHBOUR_LEFT = 0x200;     // its left edge follows the neighbour's
inline constexpr long APM_ALIGN_NEIGHBOUR_RIGHT = 0x400;    // its right edge follows the neighbour's
inline constexpr long APM_STRETCH_TO_NEIGHBOUR = 0x800;     // its right edge follows the neighbour's left
inline constexpr long APM_STRETCH_FROM_NEIGHBOUR = 0x1000;  // its left edge follows the neighbour's right
inline constexpr long APM_MATCH_NEIGHBOUR_WIDTH = 0x2000;   // takes the neighbour's left edge and width
inline constexpr long APM_GROW_TO_NEIGHBOUR_WIDTH = 0x4000; // the same, if the neighbour is not narrower
inline constexpr long APM_KEEP_MIN_WIDTH = 0x100000;        // fitted to a text it is never narrower than now
inline constexpr long APM_RESIZE_WITH_PARENT = 0x200000; // the two KEEP_ flags size it instead of moving it
inline constexpr long APM_DEFAULT_PADDING = 0x400000;    // 20 pixels beside its text, not what there is now
inline constexpr long APM_CENTER_ON_FIT = 0x800000;      // fitted, it keeps its middle, not its left edge
inline constexpr long APM_TEXT_FIXED = 0x1000000;        // its text is not looked at
inline constexpr long APM_NO_PADDING = 0x2000000;      // none beside its text, whatever DEFAULT_PADDING says
inline constexpr long APM_KEEP_AMPERSANDS = 0x4000000; // they are measured with its text
inline constexpr long APM_WIDEST_STRING = 0x8000000;   // fitted once, to the widest of the given strings
inline constexpr long APM_INVALIDATE_ON_MOVE = 0x10000000; // what it covers is painted with the window

// --- the records: frozen layouts --------------------------------------------------------------------------

struct ControlsListEntry {
    HWND m_Control;                       // offset 0; null: released while the list was walked
    HWND m_Neighbour;                     // offset 4, null for none
    long m_Flags;                         // offset 8
    char m_Text[256];                     // offset 12, when it was last handled: 254 characters of it
    RECT m_ClientRect;                    // offset 268, when it was last handled
    long m_Padding;                       // offset 284, pixels beside the text
    long m_MinWidth;                      // offset 288, 0: none
    WINDOWPLACEMENT m_NeighbourPlacement; // offset 292, when it was last handled
    long m_RightOffset;                   // offset 336
    long m_BottomOffset;                  // offset 340
    long m_NeighbourGap;                  // offset 344
    long m_MaxTextWidth;                  // offset 348, with APM_WIDEST_STRING
};
static_assert(offsetof(ControlsListEntry, m_Text) == 12 && offsetof(ControlsListEntry, m_ClientRect) == 268);
static_assert(offsetof(ControlsListEntry, m_NeighbourPlacement) == 292);
static_assert(offsetof(ControlsListEntry, m_MaxTextWidth) == 348 && sizeof(ControlsListEntry) == 352);

struct GroupBoxsListEntry {
    HWND m_Box;                           // offset 0
    HWND m_Neighbour;                     // offset 4, null for none
    CDSList m_Members;                    // offset 8, the HWNDs inside
    long m_Flags;                         // offset 48, of which the two ALIGN_ flags count
    long m_TopMargin;                     // offset 52, from the box's edge to the outermost member's
    long m_LeftMargin;                    // offset 56
    long m_BottomMargin;                  // offset 60
    long m_RightMargin;                   // offset 64
    WINDOWPLACEMENT m_NeighbourPlacement; // offset 68, when the box was registered
    long m_NeighbourGap;                  // offset 112
};
static_assert(sizeof(GroupBoxsListEntry) == 116);

// ----------------------------------------------------------------------------------------------------------

/// Results: 0; E_UNEXPECTED before Initialize; E_INVALIDARG for a null control, box or list, an empty list,
/// an identifier that gives no window, and APM_WIDEST_STRING without strings; E_OUTOFMEMORY. With any of them
/// nothing is registered or moved.
class KELMARA_API CAutoPositionManager {
  public:
    KELMARA_CLASS_ALLOCATION

    /// Throws what a list throws without memory for its items, as copies do.
    CAutoPositionManager();
    CAutoPositionManager(const CAutoPositionManager &other);
    CAutoPositionManager &operator=(const CAutoPositionManager &other);
    /// Frees all records, and touches no window.
    ~CAutoPositionManager();

    /// The window whose controls are managed, and its size as it is now. 0, always.
    long Initialize(HWND parent);

    /// Measures a control and registers it; `neighbour` may be null, `neighbour_id` 0. `strings`, with
    /// APM_WIDEST_STRING only, is an array of `char *` that ends in a null and is read at once. Controls are
    /// laid out in the order of their registration: a neighbour registered before its follower saves a sweep.
    /// E_OUTOFMEMORY, and nothing is registered, also where a text that counts cannot be measured.
    long Manage_Control(HWND control, long flags, HWND neighbour, const void *strings);
    long Manage_Control(int id, long flags, int neighbour_id, const void *strings);

    /// Registers a group box with what is in it, an array that ends in a null, or in a 0. Of identifiers the
    /// first 31 are taken, and one that gives no window ends them.
    long Manage_GroupBox(HWND box, long flags, const HWND *members, HWND neighbour);
    long Manage_GroupBox(int id, long flags, const int *member_ids, int neighbour_id);

    /// Forgets the first record of a control. ERROR_NOT_FOUND when there is none, and for an identifier that
    /// gives no window any more: its record goes by the handle.
    long Release_Control(HWND control);
    long Release_Control(int id);

    /// Moves and sizes what has to follow a change of the window's size, a text, a control or a neighbour,
    /// and does it over until nothing changes any more. A layout that has not settled after 8 sweeps for each
    /// record and 64 more stays as it is then, and the debug log is told; the result is 0 all the same. A
    /// control whose text cannot be measured, as without memory, keeps its width; the next sweep, or update,
    /// measures it again.
    long Update_Controls();

    /// Moves all direct children sideways, together, so that they stand in the middle of the window, and
    /// measures every control anew; one whose text cannot be, as without memory, keeps its padding. What is
    /// centred reaches to that middle in any case.
    long Center_Child_Controls();

  protected:
    void Update_GroupBoxes();
    /// Measures a record whose first three fields stand. 0; E_OUTOFMEMORY, and the padding is left as it was,
    /// where the text cannot be measured.
    long Save_Control_State(ControlsListEntry *record);
    /// The outermost edges of a box's members and its middle.
    void Get_GroupBox_Extremes(GroupBoxsListEntry *group, long *left, long *right, long *bottom, long *top);
    /// The first record of a control, null when there is none.
    ControlsListEntry *Find_Entry(HWND control);
    static int Child_Enum_Proc(HWND child, long parameter);

    HWND m_Parent = nullptr; // offset 0
    RECT m_LastClient = {};  // offset 4, as Initialize or Update_Controls saw it last
    CDSList m_Controls;      // offset 20, ControlsListEntry records, owned by the list
    CDSList m_GroupBoxes;    // offset 60, GroupBoxsListEntry records, each a block of ds_malloc

  private:
    friend struct AutoPositionLayout;

    KELMARA_INTERNAL void Measure_Group(GroupBoxsListEntry &group);
    KELMARA_INTERNAL void Follow_Neighbour(GroupBoxsListEntry &group);
    KELMARA_INTERNAL void Wrap_Members(GroupBoxsListEntry &group);
};
static_assert(sizeof(CAutoPositionManager) == 100);
