/**
 * @file pmExport.h
 * @brief Visibility markers of the public headers.
 *
 * The library is built with hidden visibility; only the C entry points
 * (PM_API) and the namespaces of the lower layers (PM_VISIBLE) are exported.
 */
#ifndef PIXMORA_PMEXPORT_H
#define PIXMORA_PMEXPORT_H

#if defined(__clang__) && defined(__cplusplus)
/* clang takes no GNU attribute between "namespace" and the name. */
#define PM_VISIBLE [[gnu::visibility("default")]]
#elif defined(__GNUC__)
#define PM_VISIBLE __attribute__((visibility("default")))
#else
#define PM_VISIBLE
#endif

#define PM_API PM_VISIBLE

#endif
