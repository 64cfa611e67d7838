#pragma once
// A component's entries in HKEY_CLASSES_ROOT, in one shape for all: written when it is installed, taken out
// when it goes. After RegisterServer the class can be created in-process.
//
// Each call writes or deletes as much as the machine lets it, goes on behind what fails, and answers 0
// whatever came of it. Texts may be null or empty: a null one is not written, and no key is made or deleted
// for an identifier without a name. What belongs into a key that cannot be had is left out, as is the
// path of a module that cannot be told. They use the registry wrapper, so one thread of the process at a
// time.

#include <kelmara/api.h>

/// Enters the class with the module that `component` is, by the first 512 characters of its path, for one
/// thread at a time, under its two identifiers. What is there is written over.
KELMARA_API long RegisterServer(HINSTANCE component, _GUID const &clsid, const char *friendly_name,
                                const char *version_independent_id, const char *program_id);

/// Adds an icon and a verb to a class that is registered; without that, nothing. The verb's command is the
/// prefix, cut to 214 characters, the class in braces and ",%1", with nothing between them.
KELMARA_API long RegisterShellExtension(HINSTANCE component, _GUID const &clsid, const char *command_prefix,
                                        const char *verb);

/// Deletes the class and both identifiers with everything below them, however deep.
KELMARA_API long UnregisterServer(_GUID const &clsid, const char *version_independent_id,
                                  const char *program_id);
