#define WITHOUT_INITIALIZE
#include <tests/modules/log_companion_parts.h>
