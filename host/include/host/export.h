// Export decoration of the host library. One hostcore library per process holds the
// undo hold, the reference system and the class directory; the module and every
// program link against it rather than carrying copies of their own.
#pragma once

#if defined(_WIN32)
#if defined(HOSTCORE_BUILD)
#define HOST_API __declspec(dllexport)
#else
#define HOST_API __declspec(dllimport)
#endif
#else
#define HOST_API __attribute__((visibility("default")))
#endif
