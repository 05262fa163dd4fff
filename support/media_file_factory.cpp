// The parts of CMediaFileFactory that are not abstract.
#include <MediaAccessor/media_file_factory.h>

#include <algorithm>
#include <string>

#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {

CMediaFileFactory::CMediaFileFactory() = default;
CMediaFileFactory::~CMediaFileFactory() = default;

unsigned long CMediaFileFactory::GetDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaFileFactory::GetExtension(unsigned long index, char* buffer,
                                              unsigned long capacity) const {
  return NoThrowOr(0UL, [&] {
    // An extension is reported by its bare length, so the rule of TextOf does not fit.
    const unsigned long wideLength = GetExtension(index, static_cast<wchar_t*>(nullptr), 0);
    if (wideLength == 0) return 0UL;
    std::wstring wide(wideLength + 1, L'\0');
    wide.resize(std::min(GetExtension(index, wide.data(), wideLength + 1), wideLength));
    const unsigned long length = CopyText(wide, static_cast<char*>(nullptr), 0) - 1;
    if (buffer != nullptr && capacity > 0) CopyText(wide, buffer, capacity);
    return length;
  });
}

}  // namespace Quorvex
