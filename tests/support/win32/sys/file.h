/* The lock that flock takes on other systems: here it is the one that the settings store takes. */
#pragma once

enum { LOCK_EX = 2 };

#ifdef __cplusplus
extern "C" {
#endif

int flock(int file, int operation);

#ifdef __cplusplus
}
#endif
