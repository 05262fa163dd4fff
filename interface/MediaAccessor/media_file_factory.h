// CMediaFileFactory: makes the reader objects of one file format.
#pragma once

#include <MediaAccessor/export.h>

namespace Quorvex {

class CMediaFile;

/// A file format as the registry knows it. Derive from it and hand an object to
/// MediaAccessorRegistryAdd to add a format of your own.
///
/// The registry never owns a factory: keep it alive while it is registered. Its operations are
/// const and may be called from several threads at once.
///
/// The order of the virtual operations is binary interface: slots 0 to 6.
class MEDIA_ACCESSOR_API CMediaFileFactory {
 public:
  CMediaFileFactory();
  virtual ~CMediaFileFactory();
  CMediaFileFactory(const CMediaFileFactory&) = delete;
  CMediaFileFactory& operator=(const CMediaFileFactory&) = delete;

  /// The format's name ("Portable WAV Format"). Text rule: text.h.
  virtual unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const = 0;
  /// The same as narrow text; here the wide text, converted.
  virtual unsigned long GetDescription(char* buffer, unsigned long capacity) const;

  /// How many file name extensions the format declares.
  virtual unsigned long GetExtensionCount() const = 0;

  /// An extension, without the dot, in any letter case.
  /// @param index   0 to GetExtensionCount() - 1; any other gives 0 and an untouched buffer.
  /// @param buffer  receives the extension, cut to `capacity` and terminated; null asks for the
  ///                length alone.
  /// @return the extension's whole length, without the terminator.
  virtual unsigned long GetExtension(unsigned long index, wchar_t* buffer,
                                     unsigned long capacity) const = 0;
  /// The same as narrow text; here the wide text, converted.
  virtual unsigned long GetExtension(unsigned long index, char* buffer,
                                     unsigned long capacity) const;

  /// Makes a new, unopened file object of this format.
  /// @return owned by the caller, who ends it with MediaFileClose; null when it cannot be created.
  virtual CMediaFile* CreateMediaFile() const = 0;
};

}  // namespace Quorvex
