#pragma once
// Whose code may be loaded into this process: root's, this user's, and that of whoever owns the program, this
// library or a folder that one of them lies in, whose code runs here anyway. A library whose file has been
// deleted, or replaced, gives nobody that right.
//
// The host's loader goes the path again, because a module bears the name under which it was sought. Nobody
// else can have changed what is looked at here by then; who may rename the folders on the way to it can.

#include <string>

/// True when code may come from the file that is open, under that path: it, each link that leads from the
/// path to it, and the folders that these lie in belong to one of those; and not everybody may write to
/// them, a sticky bit or none.
bool May_Give_Code(int descriptor, const std::string &path);
