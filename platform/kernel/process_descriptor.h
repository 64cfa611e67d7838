#pragma once
// The host's descriptors of processes: pidfd_open and pidfd_send_signal.

#include <fcntl.h>
#include <signal.h>

extern "C" { // the C library of Debian 12 declares them for C alone
#include <sys/pidfd.h>
}
