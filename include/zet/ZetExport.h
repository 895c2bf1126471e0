// Symbol visibility for the platform library. The platform is built with default
// visibility off; what a host or the plug-in may call carries ZET_PLATFORM_API.
#pragma once

#if defined(_WIN32)
#if defined(ZET_PLATFORM_BUILD)
#define ZET_PLATFORM_API __declspec(dllexport)
#else
#define ZET_PLATFORM_API __declspec(dllimport)
#endif
#else
#define ZET_PLATFORM_API __attribute__((visibility("default")))
#endif
