#define WITHOUT_GET_MESSAGES
#define WITHOUT_STOP_MESSAGES
#define WITHOUT_RUN_CLEANUP_THREAD
#include <tests/modules/log_companion_parts.h>
