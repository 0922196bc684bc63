#pragma once

// Loading a library at run time, on each system by its own functions.

#ifdef _WIN32

#include <string>

#include <windows.h>

// The loader must search the library's own folder for the libraries that it needs, so that it can be loaded
// from anywhere.
inline void* load(const char* file) { return LoadLibraryExA(file, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH); }
inline void* find(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
inline void unload(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }
inline std::string reason(const char* file)
{
    return std::string(file) + ": cannot open, error " + std::to_string(GetLastError());
}

#else

#include <string>

#include <dlfcn.h>

inline void* load(const char* file) { return dlopen(file, RTLD_NOW); }
inline void* find(void* library, const char* name) { return dlsym(library, name); }
inline void unload(void* library) { dlclose(library); }
// NOLINTNEXTLINE(concurrency-mt-unsafe): each thread has its own text
inline std::string reason(const char* /*file*/) { return dlerror(); }

#endif
