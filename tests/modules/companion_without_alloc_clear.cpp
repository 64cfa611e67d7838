#define WITHOUT_ALLOC_CLEAR
#include <tests/modules/companion_parts.h>
