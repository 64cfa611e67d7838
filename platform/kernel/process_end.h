#pragma once
// Whether the process is on its way out.

/// True from the first ExitProcess on.
bool Process_Is_Ending();
