#include <tests/modules/log_companion_parts.h>
