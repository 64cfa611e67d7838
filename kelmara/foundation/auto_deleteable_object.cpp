#include <kelmara/foundation/auto_deleteable_object.h>

CAutoDeleteableObject::~CAutoDeleteableObject() = default;
