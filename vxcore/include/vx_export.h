/// \file
/// Export and linkage markers shared by every public header.
#ifndef VX_EXPORT_H
#define VX_EXPORT_H

/// The library is built with hidden visibility; everything that forms its interface carries
/// VX_API. Hosts see the same attribute, which is harmless on import.
#define VX_API __attribute__((visibility("default")))

/// Explicit template instantiations are marked on their `extern template` declaration in the
/// public header, which the defining source includes before its `template class X<T>;`. The
/// mark is needed there whatever the class template itself carries: clang otherwise gives an
/// instantiation the narrowest visibility of its arguments (an unmarked enumeration counts as
/// hidden), and would leave VX_TypedFile<VX_STORAGE_BINARY> out of the library. The definition
/// stays unmarked, since GCC warns about attributes on a class already declared. Macros that
/// write both forms from one `EXTERN` argument ("extern" or nothing) paste it onto `VX_API_`:
/// VX_API_extern is VX_API, plain VX_API_ is nothing.
///@{
#define VX_API_extern VX_API
#define VX_API_
///@}

/// Marks free functions and data that keep plain (unmangled) names, from C++ and from C.
#ifdef __cplusplus
#define VX_EXTERN_C extern "C"
#else
#define VX_EXTERN_C extern
#endif

#endif
