// Marks what libsurvival exports; everything else in it is hidden.
#ifndef SURVIVAL_EXPORT_H_
#define SURVIVAL_EXPORT_H_

#if defined(_WIN32)
#if defined(SURVIVAL_BUILDING)
#define SURVIVAL_API __declspec(dllexport)
#else
#define SURVIVAL_API __declspec(dllimport)
#endif
#else
#define SURVIVAL_API __attribute__((visibility("default")))
#endif

// C linkage from either language.
#if defined(__cplusplus)
#define SURVIVAL_C extern "C" SURVIVAL_API
#else
#define SURVIVAL_C SURVIVAL_API
#endif

#endif  // SURVIVAL_EXPORT_H_
