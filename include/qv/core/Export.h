#ifndef QV_CORE_EXPORT_H
#define QV_CORE_EXPORT_H

// Symbols of libqvcl3 are hidden unless marked.
#if defined(__GNUC__)
#define QV_EXPORT __attribute__((visibility("default")))
#else
#define QV_EXPORT
#endif

#endif
