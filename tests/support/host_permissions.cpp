#include <tests/support/host_permissions.h>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {

void Exchange(unsigned (&effective)[2]) {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2];
    if (syscall(SYS_capget, &header, data) != 0) return;
    for (int i = 0; i < 2; ++i) std::swap(data[i].effective, effective[i]);
    syscall(SYS_capset, &header, data);
}

} // namespace

HostPermissions::HostPermissions() {
    Exchange(effective_);
}

HostPermissions::~HostPermissions() {
    Exchange(effective_);
}
