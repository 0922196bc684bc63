/* Starting a program as POSIX does, in the little that tests need. */
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Attributes, file actions and the environment are taken as null, null and the caller's. */
int posix_spawn(pid_t* process, const char* program, const void* actions, const void* attributes,
                char* const arguments[], char* const environment[]);

#ifdef __cplusplus
}
#endif
