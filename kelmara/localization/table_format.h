#pragma once
// Inside the library: formatting by a text from a string table, which comes from outside and may ask for
// arguments that nobody has given.

#include <cstdarg>
#include <cstddef>

/// Formats as printf does, at most `size` - 1 characters and a terminator, with d i u o x X c s p e E f F g
/// G, their flags, widths, precisions and h hh l ll. Nothing that an argument holds is a format again, and no
/// argument is written to. A text that cannot be read stands as "(unreadable)", a null one as "(null)". From
/// the first other conversion on, %n among them, the rest of the format stands as it is: what it would take
/// is not known. So it does from where it would take more than 64 words of arguments, and it ends when the
/// room does. Arguments are as printf takes them; more than the caller gave, within those 64 words, are read
/// as whatever lies there, which may show in the result but harms nothing.
void Format_By_Table(char *out, std::size_t size, const char *format, va_list arguments);
