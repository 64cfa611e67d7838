#include <tests/modules/wait_companion_parts.h>
