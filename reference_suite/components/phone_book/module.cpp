// kmphonebook: the phone book component.

#include <reference_suite/components/phone_book/phone_book_component.h>

static constinit ComponentFactory<PhonebookComponent> factory;

constinit const ComponentClass component_class = {CLSID_PhonebookComponent, factory, "Kelmara phone book",
                                                  "Kelmara.Phonebook", "Kelmara.Phonebook.1"};
