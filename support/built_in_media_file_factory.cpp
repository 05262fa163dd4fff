// Text operations of the built-in factories.
#include "support/built_in_media_file_factory.h"

#include "support/text.h"

namespace Quorvex {

unsigned long BuiltInMediaFileFactory::GetDescription(wchar_t* buffer,
                                                      unsigned long capacity) const {
  return CopyText(description_, buffer, capacity);
}

unsigned long BuiltInMediaFileFactory::GetExtensionCount() const {
  return static_cast<unsigned long>(extensions_.size());
}

unsigned long BuiltInMediaFileFactory::GetExtension(unsigned long index, wchar_t* buffer,
                                                    unsigned long capacity) const {
  if (index >= extensions_.size()) return 0;
  if (buffer != nullptr) CopyText(extensions_[index], buffer, capacity);
  return static_cast<unsigned long>(extensions_[index].size());
}

}  // namespace Quorvex
