#pragma once
// The first stretch: memory through the companion, and atoms shared between processes.

void Make_First_Allocation();
void Share_Atoms();

/// The neighbours of Share_Atoms; exit codes.
int Add_An_Answer();
int Hold_The_Lock();
