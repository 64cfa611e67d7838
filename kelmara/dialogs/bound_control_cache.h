#pragma once
// Makes and owns the bound controls of one dialog or property page.
//
//     CBoundControlCache cache;
//     CBoundTextControl *name = cache.GetTextControl();     // null without memory
//     name->AttachTo(GetDlgItem(dialog, 100));
//     ...
//     cache.ReturnTextControl(name);                        // or leave it to the cache's end
//
// A control that is returned is detached and destroyed; it is not kept for reuse. Those that are not returned
// are destroyed with the cache, which is earlier than their windows or later. Radio groups are the caller's
// alone and are always returned. Only what this cache gave is returned to it, once; null is ignored. For the
// thread that owns the dialog.
//
// A copy has the same controls: of the two only one may be used and destroyed, and what the target of an
// assignment had is not destroyed.

#include <kelmara/dialogs/bound_checkbox.h>
#include <kelmara/dialogs/bound_combo_box.h>
#include <kelmara/dialogs/bound_list_box.h>
#include <kelmara/dialogs/bound_radio_group.h>
#include <kelmara/dialogs/bound_text.h>

class KELMARA_API CBoundControlCache {
  public:
    KELMARA_CLASS_ALLOCATION

    /// Throws as a list does where there is no memory for the pool of items.
    CBoundControlCache();
    CBoundControlCache(const CBoundControlCache &other);
    CBoundControlCache &operator=(const CBoundControlCache &other);
    virtual ~CBoundControlCache();

    CBoundTextControl *GetTextControl();
    void ReturnTextControl(CBoundTextControl *control);
    CBoundCheckboxControl *GetCheckboxControl();
    void ReturnCheckboxControl(CBoundCheckboxControl *control);
    CBoundListboxControl *GetListboxControl();
    void ReturnListboxControl(CBoundListboxControl *control);
    CBoundComboBoxControl *GetComboboxControl();
    void ReturnComboboxControl(CBoundComboBoxControl *control);
    /// The group takes both lists over. Null without memory; the lists are then still the caller's.
    CBoundRadioGroupControl *GetRadioGroupControl(CDSList *ids, CDSList *values);
    void ReturnRadioGroupControl(CBoundRadioGroupControl *group);

  private:
    friend struct BoundControlCacheLayout;

    // Offsets are frozen; the pointer to the virtual table is at 0.
    CDSList m_TextControls;     // offset 4
    CDSList m_CheckboxControls; // offset 44
    CDSList m_ListboxControls;  // offset 84
    CDSList m_ComboboxControls; // offset 124
};
static_assert(sizeof(CBoundControlCache) == 164);
