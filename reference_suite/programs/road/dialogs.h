#pragma once
// The fourth stretch: a dialog and its menu in two languages, with pictures of them.

void Translate_A_Dialog();
