// The factory registry: which formats are tried for a file name, and in which order.
//
// An extension key is made of an extension or a path alike: the text after the last dot, or after
// the last separator when that comes later, in lower case. Only A-Z and the seven capitals U+00C1,
// U+00C9, U+00CD, U+00D1, U+00D3, U+00DA and U+00DC are lowered: that narrow set is wanted. "wav",
// ".WAV" and "/dir/Take.Wav" are the key "wav"; "name" is the key "name". A separator is '\', on
// Linux also '/'.
//
// The candidates for a key are the factories registered for it, the most recently added or
// overridden first, then the default factories in the order in which they were set, but for those
// that exclude the key or stand before already.
//
// The registry never owns a factory. Every function may be called from any thread; every one but
// MediaAccessorRegistryClear() first registers the built-in factories if that is still to be done,
// so that what the application adds stands before them. A function that waits for the registry's
// lock gives up after 1000 ms: QVERR_BUSY, or 0 from a counting or text function. All also return
// QVERR_CREATE_FAILED when memory runs out or a factory throws.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

class CMediaFileFactory;

/// Adds a factory: appended to the factory list, and put first for each extension that it declares.
/// Added again it keeps one place an extension, the first, and gets a second one in the factory
/// list.
/// @param factory  not owned; it must stay alive while it is registered.
/// @return QVERR_OK; QVERR_NO_SOURCE for null; QVERR_BUSY, with the factory in the factory list all
///         the same.
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryAdd(const CMediaFileFactory* factory) noexcept;

/// Puts a factory first for one extension, whatever it declares itself.
/// @return QVERR_OK; QVERR_NO_SOURCE for a null factory; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryOverride(const char* extension, const CMediaFileFactory* factory) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryOverride(const wchar_t* extension, const CMediaFileFactory* factory) noexcept;

/// Gives `alias` the present candidates of `extension`, in their order, ahead of what it had. With
/// an empty `extension`, or one without candidates, it gets every factory of the factory list
/// instead, the most recently added first. No link stays: later changes to `extension` do not reach
/// the alias.
/// @return QVERR_OK; QVERR_INVALID_ARGUMENT for an empty alias; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryAddExtensionAlias(const char* extension, const char* alias) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryAddExtensionAlias(const wchar_t* extension, const wchar_t* alias) noexcept;

/// Makes a factory a default one, tried after the factories of the extension itself. A factory that
/// is set again moves to the end and keeps the extensions that it excludes.
/// @param extension  excluded from now on for this factory, unless empty.
/// @return QVERR_OK; QVERR_NO_SOURCE for a null factory; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistrySetDefault(const CMediaFileFactory* factory) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistrySetDefault(const CMediaFileFactory* factory,
                                                                   const char* extension) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistrySetDefault(
    const CMediaFileFactory* factory, const wchar_t* extension) noexcept;

/// Removes an extension and its factories.
/// @param alsoExcludeDefaults  every present default factory excludes the extension from now on, so
///                             that nothing at all is tried for it.
/// @return QVERR_OK, also when the extension was not there; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistryClear(const char* extension,
                                                              bool alsoExcludeDefaults) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistryClear(const wchar_t* extension,
                                                              bool alsoExcludeDefaults) noexcept;

/// Empties the whole registry. The next use registers the built-in factories again.
/// @return QVERR_OK; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistryClear() noexcept;

/// Empties the list of default factories. @return QVERR_OK; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorRegistryClearDefaults() noexcept;

/// Number of extensions that have an entry; 0 when the lock could not be had.
MEDIA_ACCESSOR_API unsigned long MediaAccessorRegistryGetExtensionCount() noexcept;

/// The extension at a position, in ascending order of 16-bit character codes. Text rule: text.h; 0
/// also for an index past the last one.
MEDIA_ACCESSOR_API unsigned long MediaAccessorRegistryGetExtension(unsigned long index,
                                                                   char* buffer,
                                                                   unsigned long capacity) noexcept;
MEDIA_ACCESSOR_API unsigned long MediaAccessorRegistryGetExtension(unsigned long index,
                                                                   wchar_t* buffer,
                                                                   unsigned long capacity) noexcept;

/// A candidate for a path or extension.
/// @param index      position among the candidates.
/// @param factory    receives the candidate; null on failure.
/// @param isDefault  set to true for a default factory and otherwise left alone: initialise it.
/// @return QVERR_OK; QVERR_INVALID_ARGUMENT for an index past the candidates; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryGetFactory(const char* pathOrExtension, unsigned long index,
                                const CMediaFileFactory*& factory, bool& isDefault) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG
MediaAccessorRegistryGetFactory(const wchar_t* pathOrExtension, unsigned long index,
                                const CMediaFileFactory*& factory, bool& isDefault) noexcept;

/// Number of factories in the factory list, which keeps every Add in its order, repeats included.
/// The list has a lock of its own: the registry's is needed only while the built-in factories are
/// still to be registered.
MEDIA_ACCESSOR_API unsigned long GetMediaFileFactoryCount() noexcept;

/// A factory of the factory list.
/// @param factory  receives it; null on failure.
/// @return QVERR_OK; QVERR_INVALID_ARGUMENT for an index past the last one; QVERR_BUSY.
MEDIA_ACCESSOR_API QVERRORCODE_TAG GetMediaFileFactory(unsigned long index,
                                                       const CMediaFileFactory*& factory) noexcept;

}  // namespace Quorvex
