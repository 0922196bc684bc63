/* What tests call of POSIX and mingw-w64 lacks. Included before every test source. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int setenv(const char* name, const char* value, int overwrite);
int unsetenv(const char* name);
char* mkdtemp(char* name);
/* Fails: there is no such thing here. */
int mkfifo(const char* name, unsigned mode);

#ifdef __cplusplus
}
#endif
