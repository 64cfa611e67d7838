#pragma once
// Giving files and folders other names.

/// Machine_Rename, with a code of errors.h.
long Rename(const char *from, const char *to);
