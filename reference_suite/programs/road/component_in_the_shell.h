#pragma once
// A component's entries in the registry, and what the system makes of them.

/// Needs COM on the thread.
void Register_A_Component();
