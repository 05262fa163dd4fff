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

// The licence decision. G.729 Annex A, the feature "G729", and G.723.1, the feature "TrueSpeech",
// are licensed speech codecs. Without a word from the host both may be used. The host has two ways
// to say otherwise, each of which replaces what it said in the same way before; a feature is
// permitted when neither speaks against it. Refused, a codec is not decoded, coded or written by
// the library (ipp_decoder.h, ipp_encoder.h, wav_file_writer.h); codecs of the system or of FFmpeg
// are not asked about. IPPCoder::IsLicensedCodec tells the decision, which is taken anew every
// time. MediaAccessorRegistryClear() leaves it as it is.

/// The same, with the name of a licensee and a key. Both together permit both features; one without
/// the other is no licence and permits none; two empty texts take the word back. The key is not
/// verified: that is the host's affair.
/// @param licensee  null counts as empty.
/// @param key       null counts as empty.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary(const char* licensee,
                                                                  const char* key) noexcept;
/// The same for wide texts.
MEDIA_ACCESSOR_API QVERRORCODE_TAG InitializeMediaAccessorLibrary(const wchar_t* licensee,
                                                                  const wchar_t* key) noexcept;

/// A host's licence callbacks. Both are given the name of the feature, and may be called at any
/// time by any thread that uses the library, at every block that a licensed codec decodes or codes,
/// and at every frame of a G.723.1 file. An exception counts as a refusal.
///
/// The query tells how many licences there are.
/// @param count  1 on entry, for hosts that do not count.
/// @return QVERR_OK; any other code, or a count of 0, refuses the feature.
using MediaAccessorLicenceQuery = QVERRORCODE_TAG (*)(const char* feature, unsigned long& count);
/// The check is asked second, and not after a refusal.
/// @return QVERR_OK; any other code refuses the feature.
using MediaAccessorLicenceCheck = QVERRORCODE_TAG (*)(const char* feature);

/// The same, with callbacks through which the host itself decides. A null one has no say.
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
