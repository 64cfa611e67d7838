#define KELMARA_INLINE
#include <kelmara/foundation/auto_deleteable_object.h>
