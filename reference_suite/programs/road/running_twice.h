#pragma once
// A program that is started twice, and the window that says that it is busy.

void Start_Twice();
void Show_A_Wait_Window();

/// The neighbour of Start_Twice; its exit code.
int Be_The_Second_Copy();
