#include <kelmara/dialogs/auto_position.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/dialogs/coordinates.h>
#include <kelmara/dialogs/group_box_rules.h>
#include <kelmara/dialogs/placements.h>
#include <kelmara/foundation/owned_block.h>

#include <new>

namespace {

constexpr int Most_Member_Ids = 31;

void Destroy_Group(GroupBoxsListEntry *group) {
    group->~GroupBoxsListEntry();
    ds_free(group);
}

// A record until a list has it; null where there is no memory for it. Throws what a list throws.
class NewGroup {
  public:
    NewGroup() {
        OwnedBlock block(ds_malloc(sizeof(GroupBoxsListEntry)));
        if (!block.Get()) return;
        m_Group = ::new (static_cast<void *>(block.Get())) GroupBoxsListEntry();
        block.Hand_Over();
    }
    ~NewGroup() {
        if (m_Group) Destroy_Group(m_Group);
    }
    NewGroup(const NewGroup &) = delete;
    NewGroup &operator=(const NewGroup &) = delete;

    GroupBoxsListEntry *Get() const { return m_Group; }
    void Hand_Over() { m_Group = nullptr; }

  private:
    GroupBoxsListEntry *m_Group = nullptr;
};

// Of those that are still there.
template <class Use>
void For_Each_Member(GroupBoxsListEntry &group, Use use) {
    CIterator walk;
    for (void *member = walk.Iterate(&group.m_Members); member; member = walk.Next()) {
        if (IsWindow(static_cast<HWND>(member))) use(static_cast<HWND>(member));
    }
}

bool Is_Empty(GroupBoxsListEntry &group) {
    bool is_empty = true;
    For_Each_Member(group, [&is_empty](HWND) { is_empty = false; });
    return is_empty;
}

} // namespace

CAutoPositionManager::~CAutoPositionManager() {
    while (void *const group = m_GroupBoxes.Pop(0)) Destroy_Group(static_cast<GroupBoxsListEntry *>(group));
}

long CAutoPositionManager::Manage_GroupBox(HWND box, long flags, const HWND *members, HWND neighbour) try {
    if (!m_Parent) return E_UNEXPECTED;
    if (!box || !members || !*members) return E_INVALIDARG;
    NewGroup record;
    GroupBoxsListEntry *const group = record.Get();
    if (!group) return E_OUTOFMEMORY;
    group->m_Box = box;
    group->m_Neighbour = neighbour;
    group->m_Flags = flags;
    for (; *members; ++members) group->m_Members.Add(*members, 0);
    Measure_Group(*group);
    m_GroupBoxes.Add(group, 0);
    record.Hand_Over();
    return 0;
} catch (...) { // the pool's: no memory for an item
    return E_OUTOFMEMORY;
}

long CAutoPositionManager::Manage_GroupBox(int id, long flags, const int *member_ids, int neighbour_id) {
    if (!m_Parent) return E_UNEXPECTED;
    const HWND neighbour = neighbour_id ? GetDlgItem(m_Parent, neighbour_id) : nullptr;
    if (!member_ids || (neighbour_id && !neighbour)) return E_INVALIDARG;
    HWND members[Most_Member_Ids + 1] = {};
    for (int i = 0; i < Most_Member_Ids && member_ids[i]; ++i) {
        members[i] = GetDlgItem(m_Parent, member_ids[i]);
        if (!members[i]) break;
    }
    return Manage_GroupBox(GetDlgItem(m_Parent, id), flags, members, neighbour);
}

void CAutoPositionManager::Measure_Group(GroupBoxsListEntry &group) {
    Edges edges;
    Get_GroupBox_Extremes(&group, &edges.left, &edges.right, &edges.bottom, &edges.top);
    const RECT place = Normal_Place_Of(group.m_Box);
    const GroupMargins margins = Margins_Around(edges, place);
    group.m_TopMargin = margins.top;
    group.m_LeftMargin = margins.left;
    group.m_BottomMargin = margins.bottom;
    group.m_RightMargin = margins.right;
    if (!group.m_Neighbour) return;
    group.m_NeighbourPlacement = Placement_Of(group.m_Neighbour);
    group.m_NeighbourGap = Gap_Of_Box(group.m_Flags, place, group.m_NeighbourPlacement.rcNormalPosition);
}

void CAutoPositionManager::Get_GroupBox_Extremes(GroupBoxsListEntry *group, long *left, long *right,
                                                 long *bottom, long *top) {
    Edges edges = Middle_Of(Normal_Place_Of(group->m_Box));
    For_Each_Member(*group, [&edges](HWND member) { Extend(edges, Normal_Place_Of(member)); });
    *left = edges.left;
    *right = edges.right;
    *bottom = edges.bottom;
    *top = edges.top;
}

// --- updating ---------------------------------------------------------------------------------------------

void CAutoPositionManager::Follow_Neighbour(GroupBoxsListEntry &group) {
    const RECT client = Client_Of(group.m_Box), box = Normal_Place_Of(group.m_Box);
    const RECT neighbour = Normal_Place_Of(group.m_Neighbour);
    if (Are_Same(neighbour, group.m_NeighbourPlacement.rcNormalPosition)) return;
    const WindowPlace place =
        Box_Beside_Neighbour(group.m_Flags, box, client, neighbour, group.m_NeighbourGap);
    Put(group.m_Box, place);
    const long distance = Difference(box.left, place.x);
    if (distance == 0) return;
    For_Each_Member(group, [distance](HWND member) {
        const RECT at = Normal_Place_Of(member);
        Put(member, {Difference(at.left, distance), at.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER});
    });
}

void CAutoPositionManager::Wrap_Members(GroupBoxsListEntry &group) {
    if (Is_Empty(group)) return;
    Edges edges;
    Get_GroupBox_Extremes(&group, &edges.left, &edges.right, &edges.bottom, &edges.top);
    Put(group.m_Box,
        Wrapped(edges, {group.m_TopMargin, group.m_LeftMargin, group.m_BottomMargin, group.m_RightMargin}));
}

void CAutoPositionManager::Update_GroupBoxes() {
    CIterator walk;
    for (void *entry = walk.Iterate(&m_GroupBoxes); entry; entry = walk.Next()) {
        auto &group = *static_cast<GroupBoxsListEntry *>(entry);
        if (group.m_Neighbour) Follow_Neighbour(group);
        Wrap_Members(group);
    }
}
