#include <kelmara/dialogs/auto_position.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/dialogs/coordinates.h>
#include <kelmara/dialogs/layout_rules.h>
#include <kelmara/dialogs/placements.h>
#include <kelmara/dialogs/walked_records.h>
#include <kelmara/dialogs/window_helpers.h>

#include <algorithm>

// GCC has offsets behind members with a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct AutoPositionLayout {
    static_assert(offsetof(CAutoPositionManager, m_LastClient) == 4);
    static_assert(offsetof(CAutoPositionManager, m_Controls) == 20);
    static_assert(offsetof(CAutoPositionManager, m_GroupBoxes) == 60);
    static_assert(offsetof(GroupBoxsListEntry, m_Members) == 8 &&
                  offsetof(GroupBoxsListEntry, m_Flags) == 48);
    static_assert(offsetof(GroupBoxsListEntry, m_NeighbourPlacement) == 68);
};
#pragma GCC diagnostic pop

namespace {

// Any text of a window has some width; none without memory for the measuring.
bool Is_Measured(HWND parent, long text_width) {
    return text_width != 0 || !IsWindow(parent);
}

bool Measure_Widest(HWND parent, const char *const *strings, long &widest) {
    for (; *strings; ++strings) {
        const long width = Text_Width(parent, *strings);
        if (!Is_Measured(parent, width)) return false;
        widest = std::max(widest, width);
    }
    return true;
}

// Of the direct children of a window.
struct Centring {
    HWND parent;
    bool moves; // or looks how far they reach
    long left, right;
    long offset; // to the left
};

} // namespace

CAutoPositionManager::CAutoPositionManager() = default;

CAutoPositionManager::CAutoPositionManager(const CAutoPositionManager &other) = default;

CAutoPositionManager &CAutoPositionManager::operator=(const CAutoPositionManager &other) = default;

long CAutoPositionManager::Initialize(HWND parent) {
    m_Parent = parent;
    m_LastClient = Client_Of(parent);
    return 0;
}

// --- registering ------------------------------------------------------------------------------------------

long CAutoPositionManager::Manage_Control(HWND control, long flags, HWND neighbour, const void *strings) {
    if (!m_Parent) return E_UNEXPECTED;
    if (!control || ((flags & APM_WIDEST_STRING) && !strings)) return E_INVALIDARG;
    ControlsListEntry record = {};
    record.m_Control = control;
    record.m_Neighbour = neighbour;
    record.m_Flags = flags;
    if (const long result = Save_Control_State(&record)) return result;
    const auto *const texts = static_cast<const char *const *>(strings);
    if ((flags & APM_WIDEST_STRING) && !Measure_Widest(m_Parent, texts, record.m_MaxTextWidth))
        return E_OUTOFMEMORY;
    try {
        return m_Controls.AddVolatile(&record, sizeof record, 0) ? 0 : E_OUTOFMEMORY;
    } catch (...) { // the pool's: no memory for an item
        return E_OUTOFMEMORY;
    }
}

long CAutoPositionManager::Manage_Control(int id, long flags, int neighbour_id, const void *strings) {
    if (!m_Parent) return E_UNEXPECTED;
    const HWND neighbour = neighbour_id ? GetDlgItem(m_Parent, neighbour_id) : nullptr;
    if (neighbour_id && !neighbour) return E_INVALIDARG;
    return Manage_Control(GetDlgItem(m_Parent, id), flags, neighbour, strings);
}

long CAutoPositionManager::Save_Control_State(ControlsListEntry *record) {
    ControlsListEntry &r = *record;
    const RECT place = Normal_Place_Of(r.m_Control), parent_client = Client_Of(m_Parent);
    GetWindowTextA(r.m_Control, r.m_Text, Text_Limit);
    r.m_ClientRect = Client_Of(r.m_Control);
    const long width = Width_Of(r.m_ClientRect);
    const long text_width = Is_Padding_Measured(r.m_Flags) ? Text_Width(m_Parent, r.m_Text) : 0;
    const bool has_padding = !Is_Padding_Measured(r.m_Flags) || Is_Measured(m_Parent, text_width);
    if (has_padding) r.m_Padding = Padding_For(r.m_Flags, width, text_width);
    r.m_MinWidth = (r.m_Flags & APM_KEEP_MIN_WIDTH) ? width : 0;
    if (r.m_Neighbour) {
        r.m_NeighbourPlacement = Placement_Of(r.m_Neighbour);
        const RECT &neighbour = r.m_NeighbourPlacement.rcNormalPosition;
        r.m_NeighbourGap = Gap_To_Neighbour(r.m_Flags, place, neighbour).value_or(r.m_NeighbourGap);
    }
    r.m_RightOffset = Offset_From_Right(r.m_Flags, place, parent_client).value_or(r.m_RightOffset);
    r.m_BottomOffset = Offset_From_Bottom(r.m_Flags, place, parent_client).value_or(r.m_BottomOffset);
    return has_padding ? 0 : E_OUTOFMEMORY;
}

// --- releasing --------------------------------------------------------------------------------------------

long CAutoPositionManager::Release_Control(HWND control) {
    ControlsListEntry *const record = Find_Entry(control);
    if (!record) return ERROR_NOT_FOUND;
    WalkedRecords::Release(m_Controls, record);
    return 0;
}

long CAutoPositionManager::Release_Control(int id) {
    return Release_Control(GetDlgItem(m_Parent, id));
}

ControlsListEntry *CAutoPositionManager::Find_Entry(HWND control) {
    if (!control) return nullptr;
    CIterator walk;
    for (void *entry = walk.Iterate(&m_Controls); entry; entry = walk.Next()) {
        auto *const record = static_cast<ControlsListEntry *>(entry);
        if (record->m_Control == control) return record;
    }
    return nullptr;
}

// --- centring ---------------------------------------------------------------------------------------------

int CAutoPositionManager::Child_Enum_Proc(HWND child, long parameter) {
    Centring &centring = *reinterpret_cast<Centring *>(parameter);
    if (GetParent(child) != centring.parent) return 1;
    const RECT place = Normal_Place_Of(child);
    if (centring.moves) {
        Put(child, {Difference(place.left, centring.offset), place.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER});
        return 1;
    }
    centring.left = std::min(centring.left, place.left);
    centring.right = std::max(centring.right, place.right);
    return 1;
}

long CAutoPositionManager::Center_Child_Controls() {
    if (!m_Parent) return E_UNEXPECTED;
    const WalkedRecords walked(m_Controls);
    const long half = Width_Of(Client_Of(m_Parent)) / 2;
    Centring centring = {m_Parent, false, half, half, 0};
    EnumChildWindows(m_Parent, Child_Enum_Proc, reinterpret_cast<LPARAM>(&centring));
    centring.offset = Offset_To_Middle(centring.left, centring.right, half);
    centring.moves = true;
    EnumChildWindows(m_Parent, Child_Enum_Proc, reinterpret_cast<LPARAM>(&centring));
    CIterator walk;
    for (void *entry = walk.Iterate(&m_Controls); entry; entry = walk.Next()) {
        auto *const record = static_cast<ControlsListEntry *>(entry);
        if (record->m_Control) Save_Control_State(record);
    }
    return 0;
}
