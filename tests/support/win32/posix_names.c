#include "posix_names.h"

#include <errno.h>
#include <io.h>
#include <process.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <windows.h>

#include "dlfcn.h"
#include "spawn.h"
#include "sys/file.h"
#include "sys/wait.h"

enum { longest_path = 32768 };

static DWORD last_error;

static wchar_t* wide(const char* text, wchar_t* result)
{
    if (MultiByteToWideChar(CP_UTF8, 0, text, -1, result, longest_path) == 0)
        result[0] = L'\0';
    for (wchar_t* letter = result; *letter != L'\0'; ++letter) {
        if (*letter == L'/')
            *letter = L'\\';
    }
    return result;
}

void* dlopen(const char* file, int flags)
{
    static wchar_t name[longest_path]; /* tests load one library at a time */
    HMODULE library = NULL;
    if ((flags & RTLD_NOLOAD) != 0)
        library = GetModuleHandleW(wide(file, name)); /* counts for no load, so that it needs no dlclose */
    else
        library =
            LoadLibraryExW(wide(file, name), NULL, strpbrk(file, "/\\") ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    last_error = library == NULL ? GetLastError() : 0;
    return library;
}

void* dlsym(void* library, const char* name)
{
    const FARPROC function = GetProcAddress((HMODULE)library, name);
    last_error = function == NULL ? GetLastError() : 0;
    return (void*)(intptr_t)function;
}

int dlclose(void* library) { return FreeLibrary((HMODULE)library) != 0 ? 0 : -1; }

char* dlerror(void)
{
    static char text[64];
    snprintf(text, sizeof text, "error %lu of the loader", last_error);
    return text;
}

/* An empty value removes the variable here: the system knows no empty ones. */
int setenv(const char* name, const char* value, int overwrite)
{
    return overwrite != 0 || getenv(name) == NULL ? _putenv_s(name, value) : 0;
}

int unsetenv(const char* name) { return _putenv_s(name, ""); }

char* mkdtemp(char* name)
{
    static unsigned serial;
    char* const place = name + strlen(name) - 6;
    for (unsigned attempt = 0; attempt < 10000; ++attempt) {
        snprintf(place, 7, "%06lx", (GetCurrentProcessId() * 251 + serial++) & 0xFFFFFFUL);
        if (CreateDirectoryA(name, NULL) != 0)
            return name;
        if (GetLastError() != ERROR_ALREADY_EXISTS)
            break;
    }
    errno = EACCES;
    return NULL;
}

int posix_spawn(pid_t* process, const char* program, const void* actions, const void* attributes,
                char* const arguments[], char* const environment[])
{
    (void)actions;
    (void)attributes;
    (void)environment;
    *process = _spawnv(_P_NOWAIT, program, (const char* const*)arguments);
    return *process == -1 ? errno : 0;
}

pid_t waitpid(pid_t process, int* status, int options)
{
    (void)options;
    return _cwait(status, process, 0);
}

int flock(int file, int operation)
{
    OVERLAPPED place = {0};
    place.OffsetHigh = 0x40000000;
    return LockFileEx((HANDLE)_get_osfhandle(file), operation == LOCK_EX ? LOCKFILE_EXCLUSIVE_LOCK : 0, 0, 1,
                      0, &place) != 0
               ? 0
               : -1;
}

int mkfifo(const char* name, unsigned mode)
{
    (void)name;
    (void)mode;
    errno = ENOSYS;
    return -1;
}
