#pragma once
// The third stretch: strings by identifier, in two languages.

void Find_Strings();
