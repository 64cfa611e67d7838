#pragma once
// One dialling location of the suite held open: its area code, its country, its ten-digit dialling options
// with a way back from a change of them, and the fields of a component's telephone number.
//
//     CDialLocHelper location;
//     if (location.Select_Dial_Location("Home", false) != 0) return;
//     location.Save_TDD_Undo_State();
//     location.Set_TDD_Options(true, false, "206", "555");
//     if (cancelled) location.Undo_TDD_Options_Change();
//
// The object owns a reference to the location component and the token of a saved state; both are given up by
// the next selection and by the destructor, and a change that was not undone stays in force. A copy has the
// same reference and token and counts for nothing: of the two only one may be destroyed or select while they
// hold a reference. One thread at a time, with COM initialised.
//
// What is `long` is 0 on success, E_UNEXPECTED for a call at the wrong time, and otherwise the code of the
// component that failed, unchanged.

#include <kelmara/connectivity/component_interfaces.h>
#include <kelmara/foundation/auto_deleteable_object.h>

class KELMARA_API CDialLocHelper : public CAutoDeleteableObject {
  public:
    /// No location open.
    CDialLocHelper();
    CDialLocHelper(const CDialLocHelper &other);
    CDialLocHelper &operator=(const CDialLocHelper &other);
    ~CDialLocHelper() override;

    /// Opens a location in place of the one that is open. Without `reopen`, nothing is done for the name that
    /// is selected already, byte for byte; an empty one, while none is. After a failure no location is open
    /// and no state is saved. E_INVALIDARG for null and for a name of more than 129 characters, which fits no
    /// locator: cut, it would be another location's.
    long Select_Dial_Location(const char *name, bool reopen);

    /// What the location answers on being asked for its area code, with these arguments.
    long Get_Selected_Areacode(char *out, int size);

    /// Whether the location's country stands in the suite's country list with the code 1. False for every
    /// failure, and for a country's name of more than 207 characters.
    bool TDD_Available_For_Selected_Country();

    /// The fields of a component's number; needs no open location. The component writes its text to
    /// `component_text`, of the room that it needs. If that is empty, or neither other output is wanted,
    /// there is no more to it: 0. The other two have 256 bytes or are null; each is empty until it is known,
    /// and cut to 255 characters. The exchange is what stands before the first "-" of the number; without
    /// one, or when that comes first, it is the first three bytes. E_UNEXPECTED when a wanted item is
    /// missing; the area code is told before that of the number is known. E_INVALIDARG for no component and
    /// no `component_text`.
    long Get_Number_Information(IComplexComponentInterface *component, char *area_code, char *exchange,
                                char *component_text);

    /// Keeps the present options to go back to, in place of what was kept.
    long Save_TDD_Undo_State();
    /// For the numbers of an area code and exchange.
    long Set_TDD_Options(bool first, bool second, const char *area_code, const char *exchange);
    /// Goes back to what was kept, which stays kept. E_UNEXPECTED when nothing is.
    long Undo_TDD_Options_Change();

  private:
    friend struct DialLocHelperLayout;

    KELMARA_INTERNAL long Open(const char *name);
    KELMARA_INTERNAL void Close();
    KELMARA_INTERNAL void Discard_Undo_State(ITDDOptionsInterface *options);

    IComponentValuesInterface *m_Location_Values; // offset 4, owned; null: no location is open
    char m_Selected_Location[256];                // offset 8
    unsigned long m_Undo_State;                   // offset 264, a token of the location, 0 for none
};
static_assert(sizeof(CDialLocHelper) == 268);
