#pragma once
// The connection that this process has made: dialled, kept up and lost again on its own, as its fate wants
// it, on a thread of its own unless dialling is waited for.
//
// It outlives the objects of the component. While its thread may run, the module counts as in use; Reap ends
// that, once the thread has; the module reaps before it says whether it can go. Any thread may call.

#include <reference_suite/components/connection/connection_board.h>
#include <reference_suite/components/connection/connection_fate.h>

inline constexpr long Connection_Cancelled = static_cast<long>(0x800704C7u);

/// Begins a connection. With `wait`, what dialling came to: 0, the fate's result, or Connection_Cancelled
/// when it was closed meanwhile; otherwise 0 once it is dialling. On failure there is none. May throw
/// std::bad_alloc.
long Make_Connection(const std::shared_ptr<ConnectionBoard> &board, const char *configuration,
                     const char *dialled, const ConnectionFate &fate, bool wait);

/// Takes back what connections of this process have left that have ended; waits for one that was closed, by
/// its number, 0 for none.
void Reap_Connections(std::uint32_t closed);
