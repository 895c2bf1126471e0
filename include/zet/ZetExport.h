// Symbol visibility of the two shared libraries. Both are built with default
// visibility hidden: only what carries ZET_PLATFORM_API (zetplatform) or ZET_HOST_API
// (zethost) is exported, and a test holds each library to its list of exports.
#pragma once

#if defined(_WIN32)
#if defined(ZET_PLATFORM_BUILD)
#define ZET_PLATFORM_API __declspec(dllexport)
#else
#define ZET_PLATFORM_API __declspec(dllimport)
#endif
#if defined(ZET_HOST_BUILD)
#define ZET_HOST_API __declspec(dllexport)
#else
#define ZET_HOST_API __declspec(dllimport)
#endif
#else
#define ZET_PLATFORM_API __attribute__((visibility("default")))
#define ZET_HOST_API __attribute__((visibility("default")))
#endif
