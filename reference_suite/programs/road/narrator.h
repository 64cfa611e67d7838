#pragma once
// Tells what happens, step by step, and ends the program where something is not as it should be.

#include <string>

/// A heading.
void Begin_Chapter(const std::string &title);
/// One thing that happened.
void Tell(const char *format, ...) __attribute__((format(printf, 1, 2)));
/// Ends the program with 1 and says where, unless `as_it_should_be`.
void Require(bool as_it_should_be, const char *what);
/// The same for a code that is 0 on success; it is told too.
void Require_Success(long code, const char *what);
