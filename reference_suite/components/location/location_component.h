#pragma once
// The object of the location component's class: the options of one dialling location, and how numbers of its
// areas and exchanges are dialled with ten digits.

#include <reference_suite/components/location/ten_digit_options.h>
#include <reference_suite/components/storage_objects.h>

class LocationComponent final
    : public ValuesObject<Component_Location, Offer<ITDDOptionsInterface, IID_ITDDOptionsInterface>> {
  public:
    /// Saved options go with the location that they are of.
    long Open_Component(ComponentLocator *locator, long zero) override;

    // Each is E_UNEXPECTED while no location is open, and otherwise what TenDigitOptions does.
    long Save_Options(unsigned long *token) override;
    long Apply_Options(bool second, bool first, char *area_code, char *exchange) override;
    long Restore_Options(unsigned long token) override;
    long Discard_Saved_Options(unsigned long token) override;

  private:
    template <class Step>
    long With_Location(Step step) {
        return m_Component.Key().empty() ? E_UNEXPECTED : Within_Memory_Of_Suite(step);
    }
    const char *Key() const { return m_Component.Key().c_str(); }

    TenDigitOptions m_Options;
};
