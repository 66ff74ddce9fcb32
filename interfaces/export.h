// The export macro of the library's boundary.
#pragma once

#if defined(UTDATA_STATIC)
#define UTDATA_API
#elif defined(_WIN32)
#if defined(UTDATA_BUILDING)
#define UTDATA_API __declspec(dllexport)
#else
#define UTDATA_API __declspec(dllimport)
#endif
#else
#define UTDATA_API __attribute__((visibility("default")))
#endif
