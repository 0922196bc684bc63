/// \file Export.h
/// How the functions of the logger and settings library are exported and imported.
#pragma once

#if defined(_WIN32)
#if defined(ZVLOG_BUILDING)
#define ZVLOG_API __declspec(dllexport)
#elif defined(ZVLOG_STATIC)
#define ZVLOG_API
#else
#define ZVLOG_API __declspec(dllimport)
#endif
#else
#define ZVLOG_API __attribute__((visibility("default")))
#endif
