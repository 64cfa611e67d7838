#pragma once
// The fourth stretch: help under the pointer, and an icon that travels as a block.

void Point_At_Fields();
void Hand_On_An_Icon();
/// The other process's part; its exit code.
int Make_The_Icon_Again();
