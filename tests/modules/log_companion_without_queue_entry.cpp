#define WITHOUT_QUEUE_ENTRY
#include <tests/modules/log_companion_parts.h>
