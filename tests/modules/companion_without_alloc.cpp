#define WITHOUT_ALLOC
#include <tests/modules/companion_parts.h>
