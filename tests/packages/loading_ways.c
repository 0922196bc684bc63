/* dlopen and what goes with it, as applications for Windows load a producer. The variable ZV_LOADING says in
   which way:

       altered, folder    the loader is asked to search the producer's own folder
       path               that folder is in PATH
       plain              nothing but the producer's full path

   A file without a folder is looked for in the folders that GENICAM_GENTL64_PATH lists. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <windows.h>

#include <dlfcn.h>

enum { longest = 4096 };

static char last_error[longest + 64];

static void* failed(const char* what, const char* of)
{
    snprintf(last_error, sizeof last_error, "%s: %s (error %lu)", what, of, GetLastError());
    return NULL;
}

/* Finds the file in the variable's folders, in their order, as a consumer does. */
static int find_file(const char* name, char* path)
{
    static char list[8 * longest];
    const DWORD length = GetEnvironmentVariableA("GENICAM_GENTL64_PATH", list, sizeof list);
    if (length == 0 || length >= sizeof list)
        return 0;
    for (const char* folder = strtok(list, ";"); folder != NULL; folder = strtok(NULL, ";")) {
        const int written = snprintf(path, longest, "%s\\%s", folder, name);
        if (written > 0 && written < longest && GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES)
            return 1;
    }
    return 0;
}

static HMODULE load(const char* way, const char* path)
{
    if (strcmp(way, "altered") == 0)
        return LoadLibraryExA(path, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (strcmp(way, "folder") == 0)
        return LoadLibraryExA(path, NULL,
                              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (strcmp(way, "path") == 0) {
        char folder[longest];
        snprintf(folder, sizeof folder, "%s", path);
        *strrchr(folder, '\\') = '\0';
        SetEnvironmentVariableA("PATH", folder);
        return LoadLibraryA(path);
    }
    if (strcmp(way, "plain") == 0)
        return LoadLibraryA(path);
    SetLastError(ERROR_INVALID_PARAMETER);
    return NULL;
}

void* dlopen(const char* file, int flags)
{
    char path[longest];
    const char* const way = getenv("ZV_LOADING");
    (void)flags;
    if (strchr(file, '\\') != NULL)
        snprintf(path, sizeof path, "%s", file);
    else if (!find_file(file, path))
        return failed("not in a folder of GENICAM_GENTL64_PATH", file);
    const HMODULE library = load(way == NULL ? "" : way, path);
    if (library == NULL)
        return failed("cannot be loaded", path);
    printf("loaded %s\n", path);
    return library;
}

void* dlsym(void* library, const char* name)
{
    const FARPROC function = GetProcAddress(library, name);
    void* address = NULL;
    memcpy(&address, &function, sizeof address);
    return address;
}

/* Here with the check that nothing is left loaded, since that is what the producer promises. */
int dlclose(void* library)
{
    char path[longest];
    if (GetModuleFileNameA(library, path, sizeof path) == 0 || FreeLibrary(library) == 0)
        return -1;
    return GetModuleHandleA(path) == NULL ? 0 : -1;
}

char* dlerror(void) { return last_error; }
