#define WITHOUT_FREE
#include <tests/modules/companion_parts.h>
