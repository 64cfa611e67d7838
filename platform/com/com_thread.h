#pragma once
// The calling thread's use of COM.

#include <platform/com/apartment.h>

bool Thread_Uses_Com();

/// What the thread serves by; null when it has registered no class yet.
std::shared_ptr<Apartment> Own_Apartment();
/// Made if need be; null as Apartment::Begin.
std::shared_ptr<Apartment> Own_Or_New_Apartment();
