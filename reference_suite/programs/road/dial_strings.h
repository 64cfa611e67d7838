#pragma once
// The telephone line: what is dialled for a number from where.

/// Opens the line application for this process.
void Dial_From_Everywhere();
