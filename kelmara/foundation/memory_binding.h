#pragma once
// Inside the library: the exit routine of the memory services.

/// Unbinds: the companion's module is given back. The next call of an entry point binds anew.
void Release_Memory_Library();
