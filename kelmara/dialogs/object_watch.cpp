#include <kelmara/dialogs/object_watch.h>

namespace {

[[gnu::tls_model("initial-exec")]] constinit thread_local ObjectWatch *Innermost = nullptr;

} // namespace

ObjectWatch::ObjectWatch(const void *object) : m_Object(object), m_Outer(Innermost) {
    Innermost = this;
}

ObjectWatch::~ObjectWatch() {
    Innermost = m_Outer;
}

void ObjectWatch::Tell_Of_End(const void *object) {
    for (ObjectWatch *watch = Innermost; watch; watch = watch->m_Outer) {
        if (watch->m_Object == object) watch->m_Object = nullptr;
    }
}
