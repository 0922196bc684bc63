/* An application for Windows in a folder of its own, which loads the producer in one of the ways that
   applications use. It first copies the producer's files into a new folder, whose name has blanks and a
   letter outside ASCII.

       loading_win32 altered|folder|path|plain FOLDER-OF-THE-PRODUCER

   altered and folder ask the loader to search the producer's own folder, path has that folder in PATH, and
   plain has nothing but the producer's full path. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <windows.h>

#include <GenTL/GenTL.h>

static const wchar_t* const files[] = {
    L"ZVGRLibGenTL.cti",   L"ZVGRLib.dll",     L"ZVLogger.dll",        L"libPocoFoundation.dll",
    L"libgcc_s_seh-1.dll", L"libstdc++-6.dll", L"libwinpthread-1.dll", L"ZVGRLibGenTL.Libraries.manifest",
};
enum { file_count = sizeof files / sizeof *files, longest_path = 1024 };

static void fail(const char* what)
{
    fprintf(stderr, "%s: error %lu\n", what, GetLastError());
    exit(EXIT_FAILURE);
}

static void copy_files(const wchar_t* from, const wchar_t* to)
{
    if (CreateDirectoryW(to, NULL) == 0 && GetLastError() != ERROR_ALREADY_EXISTS)
        fail("the folder cannot be created");
    for (int i = 0; i < file_count; ++i) {
        wchar_t source[longest_path];
        wchar_t target[longest_path];
        swprintf(source, longest_path, L"%ls\\%ls", from, files[i]);
        swprintf(target, longest_path, L"%ls\\%ls", to, files[i]);
        if (CopyFileW(source, target, FALSE) == 0 && GetLastError() != ERROR_FILE_NOT_FOUND)
            fail("a file cannot be copied");
    }
}

static void remove_files(const wchar_t* folder)
{
    for (int i = 0; i < file_count; ++i) {
        wchar_t file[longest_path];
        swprintf(file, longest_path, L"%ls\\%ls", folder, files[i]);
        DeleteFileW(file);
    }
    RemoveDirectoryW(folder);
}

static HMODULE load(const char* way, const wchar_t* folder, const wchar_t* wide_file, const char* file)
{
    switch (way[0]) {
    case 'a':
        return LoadLibraryExW(wide_file, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
    case 'f':
        return LoadLibraryExW(wide_file, NULL,
                              LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    case 'p':
        if (way[1] == 'a')
            SetEnvironmentVariableW(L"PATH", folder);
        return LoadLibraryA(file);
    default:
        return NULL;
    }
}

/* Uses the library: the path that it gives must be that of the file that was loaded. */
static void use(HMODULE library, const char* file)
{
    const PGCInitLib init = (PGCInitLib)(intptr_t)GetProcAddress(library, "GCInitLib");
    const PGCCloseLib close = (PGCCloseLib)(intptr_t)GetProcAddress(library, "GCCloseLib");
    const PGCGetInfo info = (PGCGetInfo)(intptr_t)GetProcAddress(library, "GCGetInfo");
    char path[longest_path] = "";
    size_t size = sizeof path;
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    if (init == NULL || close == NULL || info == NULL)
        fail("a function is not exported");
    if (init() != GC_ERR_SUCCESS || info(TL_INFO_PATHNAME, &type, path, &size) != GC_ERR_SUCCESS)
        fail("the library cannot be used");
    if (lstrcmpiA(path, file) != 0) {
        fprintf(stderr, "it gives the path %s instead of %s\n", path, file);
        exit(EXIT_FAILURE);
    }
    if (close() != GC_ERR_SUCCESS)
        fail("the library cannot be closed");
}

int main(int count, char** arguments)
{
    wchar_t source[longest_path];
    wchar_t folder[longest_path];
    wchar_t wide_file[longest_path];
    char file[longest_path];
    if (count != 3) {
        fprintf(stderr, "usage: %s altered|folder|path|plain FOLDER\n", arguments[0]);
        return EXIT_FAILURE;
    }
    MultiByteToWideChar(CP_ACP, 0, arguments[2], -1, source, longest_path);
    GetTempPathW(longest_path / 2, folder);
    swprintf(folder + wcslen(folder), longest_path / 2, L"Ordner f\u00fcr %lu", GetCurrentProcessId());
    copy_files(source, folder);
    swprintf(wide_file, longest_path, L"%ls\\%ls", folder, files[0]);
    WideCharToMultiByte(CP_ACP, 0, wide_file, -1, file, longest_path, NULL, NULL);
    if (SetCurrentDirectoryA("C:\\") == 0)
        fail("drive C does not exist");

    const HMODULE library = load(arguments[1], folder, wide_file, file);
    if (library == NULL)
        fail("the library cannot be loaded");
    use(library, file);
    if (FreeLibrary(library) == 0 || GetModuleHandleW(files[0]) != NULL)
        fail("the library stays loaded");
    remove_files(folder);
    return EXIT_SUCCESS;
}
