// Plug-in modules: shared objects that add file formats and a writer to the library without the
// application's doing.
//
// When the library registers its built-in factories, it loads from its own directory
//
//     OptMediaAccessor.so, then every *MediaAccessor.*.so in the order of their names      (Linux)
//     OptMediaAccessor.dll, then every *MediaAccessor.*.dll in the order of their names (Windows)
//
// by their full paths, and from nowhere else. A module exports any of the four functions below and
// contributes what it has:
//
//     GetOptionalLibraryVersion    with one that does not return kPluginInterfaceVersion the module
//                                  is skipped
//     GetOptionalFactoryCount, GetOptionalFactories
//                                  its formats: taken only when all three are there
//     GetFFmpegWriterInstance      its writer. Of several modules with one, the last counts
//
// A module that cannot be loaded is skipped. The library's log (log.h) says what was loaded, what
// was skipped, and why; neither is a failure of the initialisation. Each module is tried once in a
// process, and what was loaded stays loaded until it ends.
//
// A plug-in is compiled like the application: for the same major version of the library, with a
// compiler that shares its C++ binary interface. It includes this header, which declares the four
// functions, and defines those that it has. A module from which an exception comes while it is
// loaded and asked is skipped; one that comes from a factory becomes a result code, one from the
// writer's function means no writer.
//
// While it is loaded and asked, the registry's lock is held: it must not wait for another thread
// that uses the library. Modules of its own are found by its run path on Linux ($ORIGIN), and in
// the library's directory on Windows.
#pragma once

#include <MediaAccessor/export.h>

namespace Quorvex {

class CMediaFileFactory;
class CMediaFileWriter;

/// The version of this interface and of the public classes' tables that a plug-in is compiled for.
inline constexpr unsigned long kPluginInterfaceVersion = 1;

/// The most factories that one module may have; one that says more is skipped.
inline constexpr unsigned long kLargestPluginFactoryCount = 1000;

}  // namespace Quorvex

extern "C" {

/// Returns Quorvex::kPluginInterfaceVersion. Called first, before anything else.
MEDIA_ACCESSOR_PLUGIN_API unsigned long GetOptionalLibraryVersion();

/// How many factories the module has.
MEDIA_ACCESSOR_PLUGIN_API unsigned long GetOptionalFactoryCount();

/// Stores the module's factories. They belong to the module and outlive its static objects: make
/// them with new. A later one stands before an earlier one for an extension that both declare; the
/// library's own formats stand before them all.
/// @param factories  receives them. Null ones are passed over.
/// @param capacity   room in `factories`: what GetOptionalFactoryCount returned.
/// @return how many were stored.
MEDIA_ACCESSOR_PLUGIN_API unsigned long GetOptionalFactories(
    const Quorvex::CMediaFileFactory** factories, unsigned long capacity);

/// Makes a new writer, which the caller owns and ends with Release(); null when there is none to be
/// had. Any thread.
MEDIA_ACCESSOR_PLUGIN_API Quorvex::CMediaFileWriter* GetFFmpegWriterInstance();

}  // extern "C"
