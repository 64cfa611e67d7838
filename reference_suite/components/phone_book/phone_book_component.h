#pragma once
// The object of the phone book component's class: which numbers stand in a book.

#include <reference_suite/components/storage_objects.h>

class PhonebookComponent final
    : public StorageObject<Component_Phonebook, Offer<IPhonebookInterface, IID_IPhonebookInterface>> {
  public:
    /// Command_Test_Number: 0 when the canonical number stands in the book of that name, whichever book is
    /// open; its digits count. ERROR_NOT_FOUND when it does not, ERROR_FILE_NOT_FOUND when there is no such
    /// book, E_INVALIDARG for what is no canonical number. E_NOTIMPL for other commands.
    long Run_Component_Command(long command, char *name, char *text, long zero, long zero_too) override;
};
