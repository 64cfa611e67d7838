#pragma once
// Inside the library: options of a component as texts, whatever the component does with the buffer.

#include <kelmara/connectivity/component_interfaces.h>

/// The option's text, cut to `room` - 1 characters; nothing behind its terminator is written. Empty without a
/// component and when that writes nothing. A text that is not terminated ends with the size that was given.
void Read_Option(IComponentValuesInterface *values, ComponentOption option, char *out, std::size_t room);

template <std::size_t Room>
void Read_Option(IComponentValuesInterface *values, ComponentOption option, char (&out)[Room]) {
    Read_Option(values, option, out, Room);
}

/// Letter case counts.
bool Option_Is(IComponentValuesInterface *values, ComponentOption option, const char *text);

/// What its digits say, as far as they fit into a long; 0 for what is no number.
long Read_Number_Option(IComponentValuesInterface *values, ComponentOption option);

/// False, and the locator cleared, for a name of more than 129 characters: cut, it would be another's.
bool Fill_Locator(ComponentLocator &locator, long kind, const char *name);
