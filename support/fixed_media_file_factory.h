// FixedMediaFileFactory: what the built-in factories have in common.
#pragma once

#include <span>
#include <string_view>

#include <MediaAccessor/media_file_factory.h>

namespace Quorvex {

/// A factory whose format name and extensions are constants. A format derives from it and adds
/// CreateMediaFile.
class FixedMediaFileFactory : public CMediaFileFactory {
 public:
  using CMediaFileFactory::GetDescription;
  using CMediaFileFactory::GetExtension;

  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;
  unsigned long GetExtensionCount() const override;
  unsigned long GetExtension(unsigned long index, wchar_t* buffer,
                             unsigned long capacity) const override;

 protected:
  /// Both must outlive the factory.
  FixedMediaFileFactory(std::wstring_view description,
                        std::span<const std::wstring_view> extensions)
      : description_(description), extensions_(extensions) {}

 private:
  std::wstring_view description_;
  std::span<const std::wstring_view> extensions_;
};

}  // namespace Quorvex
