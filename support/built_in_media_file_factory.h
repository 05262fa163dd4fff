// BuiltInMediaFileFactory: what the built-in factories have in common.
#pragma once

#include <span>
#include <string_view>

#include <MediaAccessor/media_file_factory.h>

namespace Quorvex {

/// A factory whose format name and extensions are constants.
class BuiltInMediaFileFactory : public CMediaFileFactory {
 public:
  using CMediaFileFactory::GetDescription;
  using CMediaFileFactory::GetExtension;

  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;
  unsigned long GetExtensionCount() const override;
  unsigned long GetExtension(unsigned long index, wchar_t* buffer,
                             unsigned long capacity) const override;

 protected:
  /// Both must outlive the factory.
  BuiltInMediaFileFactory(std::wstring_view description,
                          std::span<const std::wstring_view> extensions)
      : description_(description), extensions_(extensions) {}

 private:
  std::wstring_view description_;
  std::span<const std::wstring_view> extensions_;
};

/// The factory of a reader.
template <class MediaFile>
class BuiltInMediaFileFactoryOf final : public BuiltInMediaFileFactory {
 public:
  /// Both must outlive the factory.
  BuiltInMediaFileFactoryOf(std::wstring_view description,
                            std::span<const std::wstring_view> extensions)
      : BuiltInMediaFileFactory(description, extensions) {}
  CMediaFile* CreateMediaFile() const override { return new MediaFile; }
};

}  // namespace Quorvex
