/* The functions of POSIX by which tests load libraries, over those of Windows. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum { RTLD_LOCAL = 0, RTLD_NOW = 2, RTLD_NOLOAD = 4 };

/* Takes UTF-8. A file that is named with its folder finds the libraries that lie beside it. */
void* dlopen(const char* file, int flags);
void* dlsym(void* library, const char* name);
int dlclose(void* library);
char* dlerror(void);

#ifdef __cplusplus
}
#endif
