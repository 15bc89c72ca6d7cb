/* Marks what libDist exports; everything else in it is hidden. */
#ifndef DIST_EXPORT_H_
#define DIST_EXPORT_H_

#if defined(_WIN32)
#if defined(DIST_BUILDING)
#define DIST_VISIBLE __declspec(dllexport)
#else
#define DIST_VISIBLE __declspec(dllimport)
#endif
#else
#define DIST_VISIBLE __attribute__((visibility("default")))
#endif

/* C linkage from either language. */
#if defined(__cplusplus)
#define DIST_API extern "C" DIST_VISIBLE
#else
#define DIST_API DIST_VISIBLE
#endif

#endif /* DIST_EXPORT_H_ */
