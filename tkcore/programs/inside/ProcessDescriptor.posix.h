#pragma once

#include <signal.h>

// The header in Debian 12's C library does not declare its functions as C functions.
extern "C" {
#include <sys/pidfd.h>
}
