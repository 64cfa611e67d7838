#define WITHOUT_INITIALIZE
#include <tests/modules/companion_parts.h>
