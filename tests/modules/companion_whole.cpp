#include <tests/modules/companion_parts.h>
