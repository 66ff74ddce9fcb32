// The export macros of the library's boundary: UTDATA_API marks what belongs to it, UTDATA_LOCAL
// what is declared inside an exported class and does not.
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

/// On an inline member of an exported class that the library offers by name as well.
#if defined(UTDATA_STATIC) || defined(_WIN32)
#define UTDATA_INLINE_API
#else
#define UTDATA_INLINE_API UTDATA_API
#endif

#if defined(UTDATA_STATIC) || defined(_WIN32)
#define UTDATA_LOCAL
#else
#define UTDATA_LOCAL __attribute__((visibility("hidden")))
#endif
