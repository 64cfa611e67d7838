#include <kelmara/dialogs/auto_position.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/dialogs/coordinates.h>
#include <kelmara/dialogs/layout_rules.h>
#include <kelmara/dialogs/placements.h>
#include <kelmara/dialogs/walked_records.h>
#include <kelmara/dialogs/window_helpers.h>
#include <kelmara/foundation/string_helpers.h>
#include <kelmara/shared_state/log.h>

#include <cstring>
#include <optional>

namespace {

/// The window around the controls, as one update sees it.
struct ParentState {
    HWND window;
    RECT client;
    bool changed; // since the last update, until a sweep has seen to it
};

constexpr long Sweeps_Per_Record = 8, Least_Sweeps = 64; // a settling layout needs some 3 a record

/// One control's turn in a sweep: what is found of it, and what follows from that.
class ControlTurn {
  public:
    ControlTurn(const ParentState &parent, ControlsListEntry &record);
    /// Whether anything had changed.
    bool Run();

  private:
    bool Fit_To_Text();
    void Follow_Parent();
    void Follow_Neighbour();
    void Invalidate() const;

    std::optional<long> Fitted_Width();
    EdgeOffsets Offsets() const { return {m_Record.m_RightOffset, m_Record.m_BottomOffset}; }
    void Keep_From_Edges() const;

    const ParentState &m_Parent;
    ControlsListEntry &m_Record;
    const HWND m_Control;
    char m_Text[Text_Limit];
    WINDOWPLACEMENT m_Neighbour = {};
    RECT m_Place, m_Client;
    bool m_TextChanged, m_NeighbourMoved, m_ClientChanged;
};

ControlTurn::ControlTurn(const ParentState &parent, ControlsListEntry &record)
    : m_Parent(parent), m_Record(record), m_Control(record.m_Control) {
    m_Text[0] = 0;
    GetWindowTextA(m_Control, m_Text, sizeof m_Text);
    m_TextChanged = !(record.m_Flags & APM_TEXT_FIXED) && std::strcmp(m_Text, record.m_Text) != 0;
    if (record.m_Neighbour) m_Neighbour = Placement_Of(record.m_Neighbour);
    m_NeighbourMoved = record.m_Neighbour &&
                       !Are_Same(m_Neighbour.rcNormalPosition, record.m_NeighbourPlacement.rcNormalPosition);
    m_Place = Normal_Place_Of(m_Control);
    m_Client = Client_Of(m_Control);
    m_ClientChanged = !Are_Same(m_Client, record.m_ClientRect);
}

bool ControlTurn::Run() {
    if (m_TextChanged) m_TextChanged = Fit_To_Text();
    if (!m_TextChanged && !m_NeighbourMoved && !m_Parent.changed && !m_ClientChanged) return false;
    if (m_Parent.changed) Follow_Parent();
    if (m_ClientChanged || m_NeighbourMoved) Follow_Neighbour();
    if (!m_Parent.changed) Invalidate();
    return true;
}

// None where the text cannot be measured: it always has some width.
std::optional<long> ControlTurn::Fitted_Width() {
    long text_width;
    if (m_Record.m_Flags & APM_WIDEST_STRING) {
        text_width = m_Record.m_MaxTextWidth;
        m_Record.m_Flags |= APM_TEXT_FIXED;
    } else if (m_Record.m_Flags & APM_KEEP_AMPERSANDS) {
        text_width = Text_Width(m_Parent.window, m_Text);
    } else {
        char shown[sizeof m_Text];
        std::strcpy(shown, m_Text);
        Strip_Char(shown, '&');
        text_width = Text_Width(m_Parent.window, shown);
    }
    if (text_width == 0 && !(m_Record.m_Flags & APM_WIDEST_STRING)) return std::nullopt;
    const long width = Sum(text_width, m_Record.m_Padding);
    return m_Record.m_MinWidth != 0 && width < m_Record.m_MinWidth ? m_Record.m_MinWidth : width;
}

// The record keeps the size from before, so that the next sweep finds it changed and places the control.
// False for a text that cannot be measured: it stays changed, for the next update.
bool ControlTurn::Fit_To_Text() {
    const auto width = Fitted_Width();
    if (!width) return false;
    Put(m_Control, Fitted(m_Record.m_Flags, m_Place, *width));
    m_Client = Client_Of(m_Control);
    std::strcpy(m_Record.m_Text, m_Text);
    return true;
}

void ControlTurn::Keep_From_Edges() const {
    Put(m_Control, Kept_From_Edges(m_Record.m_Flags, m_Place, m_Client, m_Parent.client, Offsets()));
}

void ControlTurn::Follow_Parent() {
    if (m_Record.m_Flags & APM_RESIZE_WITH_PARENT) {
        const RECT around = Screen_Place_Of(m_Parent.window), place = Screen_Place_Of(m_Control);
        Put(m_Control, Sized_With_Parent(m_Record.m_Flags, place, around, Offsets()));
    } else {
        Keep_From_Edges();
    }
    m_Place = Normal_Place_Of(m_Control);
    m_Record.m_ClientRect = Client_Of(m_Control);
    if (m_Record.m_Flags & APM_INVALIDATE_ON_MOVE) Invalidate();
}

void ControlTurn::Follow_Neighbour() {
    Keep_From_Edges();
    const RECT &neighbour = m_Neighbour.rcNormalPosition;
    const auto here = [&] { return Neighbourhood{m_Place, m_Client, neighbour, m_Record.m_NeighbourGap}; };
    if (m_Record.m_Flags & APM_GROW_TO_NEIGHBOUR_WIDTH) {
        if (const auto grown = Grown_To_Neighbour(here())) Put(m_Control, *grown);
    }
    m_Place = Normal_Place_Of(m_Control);
    m_Record.m_ClientRect = m_Client;
    if (const auto placed = Beside_Neighbour(m_Record.m_Flags, here())) Put(m_Control, *placed);
    m_Record.m_NeighbourPlacement = m_Neighbour;
}

void ControlTurn::Invalidate() const {
    RECT covered = Screen_Place_Of(m_Control);
    GlobalToLocalRect(&covered, &covered, m_Parent.window);
    InvalidateRect(m_Parent.window, &covered, FALSE);
}

// Whether anything had changed.
bool Sweep(CDSList &records, const ParentState &parent) {
    bool any = false;
    CIterator walk;
    for (void *entry = walk.Iterate(&records); entry; entry = walk.Next()) {
        auto &record = *static_cast<ControlsListEntry *>(entry);
        if (record.m_Control && ControlTurn(parent, record).Run()) any = true;
    }
    return any;
}

} // namespace

long CAutoPositionManager::Update_Controls() {
    if (!m_Parent) return E_UNEXPECTED;
    const WalkedRecords walked(m_Controls);
    const RECT client = Client_Of(m_Parent);
    ParentState parent = {m_Parent, client, !Are_Same(client, m_LastClient)};
    bool any = true;
    long left = (m_Controls.Entries(0) + m_GroupBoxes.Entries(0)) * Sweeps_Per_Record + Least_Sweeps;
    for (; any && left > 0; --left) {
        any = Sweep(m_Controls, parent);
        if (parent.changed) m_LastClient = client;
        parent.changed = false;
        Update_GroupBoxes();
    }
    if (any) Debug_Log_Entry("%s", "A layout does not settle: its controls undo each other's places.");
    return 0;
}
