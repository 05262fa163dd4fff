// Initialisation and version of the library.
//
// Initialisation is optional: the first use of the registry, of MediaFileOpen or of a file query
// does it. It loads the plug-in modules beside the library (plugin.h) and registers their factories
// and then the built-in ones, once, until MediaAccessorRegistryClear(). After that the next use
// registers them again; the modules stay loaded.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

class CMediaFileWriter;

/// Loads the plug-in modules and registers their factories and the built-in ones. A second call
/// adds nothing and returns the first result. Any thread.
/// @return QVERR_OK, also when plug-in modules were skipped, which the log (log.h) tells;
///         QVERR_BUSY when the registry's lock could not be had within 1000 ms; QVERR_CREATE_FAILED
///         when memory runs out; when a plug-in's factory threw an exception, its result code, the
///         other factories being registered all the same.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary() noexcept;

/// The same, and keeps the two texts for the licence decision on the licensed speech codecs.
/// @param licensee  copied; null counts as empty.
/// @param key       copied; null counts as empty.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary(const char* licensee,
                                                                  const char* key) noexcept;
/// The same for wide texts.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary(const wchar_t* licensee,
                                                                  const wchar_t* key) noexcept;

/// A host's licence callbacks. Both name the feature that is asked for.
using MediaAccessorLicenceQuery = QVERRORCODE_TAG (*)(const char* feature, unsigned long& count);
using MediaAccessorLicenceCheck = QVERRORCODE_TAG (*)(const char* feature);

/// The same as the first form, and keeps the callbacks through which the host itself decides on the
/// licensed speech codecs. Null clears a callback.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary(
    MediaAccessorLicenceQuery query, MediaAccessorLicenceCheck check) noexcept;

/// The library's version: always 9, 0, 0 and 288. @return QVERR_OK.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorGetLibraryVersion(int& major, int& minor,
                                                                  int& build,
                                                                  int& revision) noexcept;

/// The version as text, "9.0.0.288 (185833).288". The revision stands in it twice on purpose.
/// @param buffer    receives the text, cut to fit and terminated; may be null.
/// @param capacity  in characters, with the terminator.
/// @return QVERR_OK.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorGetLibraryVersion(wchar_t* buffer,
                                                                  unsigned long capacity) noexcept;
/// The same as narrow text.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorGetLibraryVersion(char* buffer,
                                                                  unsigned long capacity) noexcept;

/// True when a plug-in module supplies a writer. Initialises the library, as a use of the registry
/// does; false also when that could not be done. Any thread.
MEDIA_ACCESSOR_API bool HasFFmpegWriter() noexcept;

/// A new writer from the plug-in module that supplies one, owned by the caller, who ends it with
/// Release(); null when there is none, or the module cannot make one. Initialises the library too.
/// Any thread.
MEDIA_ACCESSOR_API CMediaFileWriter* CreateFFmpegWriterInstance() noexcept;

}  // namespace Quorvex
