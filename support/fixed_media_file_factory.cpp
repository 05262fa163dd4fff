// Text operations of the built-in factories.
#include "support/fixed_media_file_factory.h"

#include "support/text.h"

namespace Quorvex {

unsigned long FixedMediaFileFactory::GetDescription(wchar_t* buffer, unsigned long capacity) const {
  return CopyText(description_, buffer, capacity);
}

unsigned long FixedMediaFileFactory::GetExtensionCount() const {
  return static_cast<unsigned long>(extensions_.size());
}

unsigned long FixedMediaFileFactory::GetExtension(unsigned long index, wchar_t* buffer,
                                                  unsigned long capacity) const {
  if (index >= extensions_.size()) return 0;
  if (buffer != nullptr) CopyText(extensions_[index], buffer, capacity);
  return static_cast<unsigned long>(extensions_[index].size());
}

}  // namespace Quorvex
