// The mark of what the shared library offers to its clients.
#pragma once

#if defined(_WIN32) && defined(MORVANE_BUILDING)
#define MORVANE_EXPORT __declspec(dllexport)
#elif defined(_WIN32)
#define MORVANE_EXPORT __declspec(dllimport)
#else
#define MORVANE_EXPORT __attribute__((visibility("default")))
#endif
