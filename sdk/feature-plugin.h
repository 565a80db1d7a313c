/* The binary interface of a feature plug-in: a library whose file name begins with "Feature" and contains ".so" (on
 * Windows ".dll"), in the directory in which the workbench is started or in one that --plugins names. It exports
 * the seven functions below under exactly these names, with C calling conventions, and may export an eighth.
 *
 * The workbench calls them from one thread and never re-enters them. A plug-in runs inside the program: if it crashes,
 * so does the workbench. */
#ifndef TESSIMAR_FEATURE_PLUGIN_H
#define TESSIMAR_FEATURE_PLUGIN_H

#include <stdbool.h> /* NOLINT(modernize-deprecated-headers): C has no others. */
#include <stdint.h>  /* NOLINT(modernize-deprecated-headers) */

#ifdef _WIN32
#define TESSIMAR_EXPORT __declspec(dllexport)
#else
#define TESSIMAR_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A longer text about the feature, in one line: the workbench does not call it, tessimar-batch --check-plugin does. */
TESSIMAR_EXPORT const char* GetDescription(void);

/* The feature's name, zero-terminated: the text that users type in updatefeature(db, "name"). Called once and copied.
 * It must not be empty, and it must not hold what cannot be typed or stored: capitals, slashes, double quotes, commas,
 * equals signs, closing brackets, control characters. */
TESSIMAR_EXPORT const char* GetShortDescription(void);

/* What the feature works on. Called once. At least one must be true; if both are, only ProcessColor is called. */
TESSIMAR_EXPORT bool NeedsGrayscale(void);
TESSIMAR_EXPORT bool NeedsColor(void);

/* The number of doubles that the next call will write, from 0 to 2^24. Called before every ProcessGrayscale and
 * ProcessColor. */
TESSIMAR_EXPORT int32_t GetFeatureLength(void);

/* Computes the feature of one picture. `pixels` is the first byte of the top row: one byte a pixel, or three bytes in
 * the order red, green, blue. `stride` is the distance between rows in bytes, up to 3 more than the row's pixels need.
 * The picture may be empty (0 by 0). The pixels are valid only during the call. `features` points to GetFeatureLength()
 * doubles that hold no defined values: write every one. The result is ignored. */
TESSIMAR_EXPORT int32_t ProcessGrayscale(const unsigned char* pixels, int32_t width, int32_t height, int32_t stride,
                                         double* features);
TESSIMAR_EXPORT int32_t ProcessColor(const unsigned char* pixels, int32_t width, int32_t height, int32_t stride,
                                     double* features);

/* May be left out. Why the plug-in cannot work here, in one line, zero-terminated; null or empty if it can. Called
 * once, before all others, and copied. A plug-in that gives a reason is left out, and the user reads "Plug-in 'FILE'
 * was left out: " and the reason. */
TESSIMAR_EXPORT const char* GetRefusal(void);

#ifdef __cplusplus
}
#endif

#endif
