#pragma once
// When the operator new of tests/support/failing_new.h fails, for all files of a program that includes it.

/// Of this thread: 1 is the next; 0: none fails.
inline thread_local unsigned long allocations_until_failure = 0;
inline thread_local bool fails_for_ever = false;
