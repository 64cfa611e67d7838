#include <kelmara/dialogs/bound_control_cache.h>

#include <kelmara/dialogs/object_watch.h>

// GCC has offsets of members behind a virtual table, and says that it need not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct BoundControlCacheLayout {
    using C = CBoundControlCache;
    static_assert(offsetof(C, m_TextControls) == 4 && offsetof(C, m_CheckboxControls) == 44);
    static_assert(offsetof(C, m_ListboxControls) == 84 && offsetof(C, m_ComboboxControls) == 124);
};
#pragma GCC diagnostic pop

namespace {

// A list inside a control throws where there is no memory for its items.
template <class Control, class... Arguments>
Control *Make(Arguments... arguments) {
    try {
        return new Control(arguments...);
    } catch (...) {
        return nullptr;
    }
}

bool Keep(CDSList &kept, void *control) {
    try {
        return kept.Add(control, 0);
    } catch (...) {
        return false;
    }
}

template <class Control>
Control *Get(CDSList &kept) {
    Control *const control = Make<Control>();
    if (!control || Keep(kept, control)) return control;
    delete control;
    return nullptr;
}

template <class Control>
void Return(CDSList &kept, Control *control) {
    if (!control) return;
    const ObjectWatch watch(control);
    control->Detach();
    kept.Remove(control, 0);
    if (watch.Is_There()) delete control; // unless a procedure of the window was its end
}

template <class Control>
void Destroy_All(CDSList &kept) {
    while (kept.Entries(0) > 0) delete static_cast<Control *>(kept.Pop(0));
}

} // namespace

CBoundControlCache::CBoundControlCache() = default;
CBoundControlCache::CBoundControlCache(const CBoundControlCache &other) = default;
CBoundControlCache &CBoundControlCache::operator=(const CBoundControlCache &other) = default;

CBoundControlCache::~CBoundControlCache() {
    Destroy_All<CBoundTextControl>(m_TextControls);
    Destroy_All<CBoundCheckboxControl>(m_CheckboxControls);
    Destroy_All<CBoundListboxControl>(m_ListboxControls);
    Destroy_All<CBoundComboBoxControl>(m_ComboboxControls);
}

CBoundTextControl *CBoundControlCache::GetTextControl() {
    return Get<CBoundTextControl>(m_TextControls);
}

void CBoundControlCache::ReturnTextControl(CBoundTextControl *control) {
    Return(m_TextControls, control);
}

CBoundCheckboxControl *CBoundControlCache::GetCheckboxControl() {
    return Get<CBoundCheckboxControl>(m_CheckboxControls);
}

void CBoundControlCache::ReturnCheckboxControl(CBoundCheckboxControl *control) {
    Return(m_CheckboxControls, control);
}

CBoundListboxControl *CBoundControlCache::GetListboxControl() {
    return Get<CBoundListboxControl>(m_ListboxControls);
}

void CBoundControlCache::ReturnListboxControl(CBoundListboxControl *control) {
    Return(m_ListboxControls, control);
}

CBoundComboBoxControl *CBoundControlCache::GetComboboxControl() {
    return Get<CBoundComboBoxControl>(m_ComboboxControls);
}

void CBoundControlCache::ReturnComboboxControl(CBoundComboBoxControl *control) {
    Return(m_ComboboxControls, control);
}

CBoundRadioGroupControl *CBoundControlCache::GetRadioGroupControl(CDSList *ids, CDSList *values) {
    return Make<CBoundRadioGroupControl>(ids, values);
}

void CBoundControlCache::ReturnRadioGroupControl(CBoundRadioGroupControl *group) {
    if (!group) return;
    group->Detach();
    delete group;
}
