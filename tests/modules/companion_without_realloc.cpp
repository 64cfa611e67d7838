#define WITHOUT_REALLOC
#include <tests/modules/companion_parts.h>
