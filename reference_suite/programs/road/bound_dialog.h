#pragma once
// The fourth stretch: a dialog whose controls are bound to values, and which is laid out anew for another
// language and another size.

void Fill_In_A_Dialog();
void Refit_A_Dialog();
