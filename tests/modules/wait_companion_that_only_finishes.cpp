#define WITHOUT_STARTUP
#define WITHOUT_SHOW
#include <tests/modules/wait_companion_parts.h>
