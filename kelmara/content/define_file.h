#pragma once
// Define files: texts of `#define name value` lines that give names to values, read into a table
// (CHashTable).
//
// A name ends at a space or tab that is not between single quotes, which stay part of it, and nowhere else. A
// value is what stands behind it up to the line feed, without the byte in front of that, the carriage return:
// in a file of bare line feeds a value loses its last character. At most 63 bytes are the value. "#define"
// counts wherever it stands, also in a comment or twice on a line; all else is passed over.

#include <kelmara/api.h>

class CHashTable;

/// Reads a file into a table that is not initialised yet. A relative `name` is looked for in the suite's
/// "Scripts" folder, then in "ScriptIncludes"; where there is no such folder, in the current directory in its
/// place. The current directory changes on the way and is as it was at the end: nobody else may need it then.
/// The table takes over the text of the file: its data point into it and have no terminators, their sizes
/// count. A value without a line end is all that is left of the text, one that is empty has the size 0. An
/// entry whose name has more than 255 characters is left out.
/// 0; 2 when there is no such file, and when the current directory cannot be told; E_OUTOFMEMORY; what
/// CKMFile::Read answers when the file cannot be read; E_INVALIDARG for a null table. On failure the table
/// was not initialised, or failed to be.
KELMARA_API long Tokenize_Define_File(const char *name, CHashTable *table);
