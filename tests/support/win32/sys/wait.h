/* Waiting for a program that posix_spawn started. */
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

pid_t waitpid(pid_t process, int* status, int options);

#ifdef __cplusplus
}
#endif

/* Exit codes of programs that an exception ended have their two highest bits set. */
#define WIFEXITED(status) (((unsigned)(status) >> 30U) != 3U)
#define WEXITSTATUS(status) (status)
#define WTERMSIG(status) (status)
