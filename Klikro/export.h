// Marks what libKlikro exports; everything else in it is hidden.
#ifndef KLIKRO_EXPORT_H_
#define KLIKRO_EXPORT_H_

#if defined(_WIN32)
#if defined(KLIKRO_BUILDING)
#define KLIKRO_API __declspec(dllexport)
#else
#define KLIKRO_API __declspec(dllimport)
#endif
#else
#define KLIKRO_API __attribute__((visibility("default")))
#endif

// A member of an exported class that only its own sources call.
#if defined(_WIN32)
#define KLIKRO_LOCAL
#else
#define KLIKRO_LOCAL __attribute__((visibility("hidden")))
#endif

#endif  // KLIKRO_EXPORT_H_
