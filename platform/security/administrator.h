#pragma once
// Whether the user of this process looks after the machine.

/// By the setting "administrator", yes or no; else by the host's user and groups (security.h).
bool Is_Administrator();
