#pragma once
// The third stretch: a section file, a define file, and a template that is filled in from all five sources.

void Write_A_Welcome();
