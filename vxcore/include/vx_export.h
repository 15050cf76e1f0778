// Export and linkage markers shared by every public header.
#ifndef VX_EXPORT_H
#define VX_EXPORT_H

// The library is built with hidden visibility; everything that forms its interface carries
// VX_API. Hosts see the same attribute, which is harmless on import.
#define VX_API __attribute__((visibility("default")))

// Free functions and data with plain (unmangled) names.
#ifdef __cplusplus
#define VX_EXTERN_C extern "C"
#else
#define VX_EXTERN_C extern
#endif

#endif
