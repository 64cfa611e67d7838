#pragma once
// What the suite's components know from the start: configurations, a phone book, dialling locations, the
// country list.

#include <string>

/// Writes what a first user would. Where there is a current configuration already, the components are the
/// user's and stay; the country list is written in any case. Empty on success, otherwise what went wrong, as
/// a sentence.
std::string Write_Component_Settings();
