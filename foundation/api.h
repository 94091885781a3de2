// Marks of what a shared library shows to others. Each library has an api.h of its own built on these two; everything
// without a mark stays inside its library.
#pragma once

#if defined(_WIN32)
#define HOUSE_EXPORT __declspec(dllexport)
#define HOUSE_IMPORT __declspec(dllimport)
#else
#define HOUSE_EXPORT __attribute__((visibility("default")))
#define HOUSE_IMPORT __attribute__((visibility("default")))
#endif

#if defined(foundation_EXPORTS)
#define FOUNDATION_API HOUSE_EXPORT
#else
#define FOUNDATION_API HOUSE_IMPORT
#endif
