#pragma once

#include <signal.h>

// The header of the C library of Debian 12 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}
