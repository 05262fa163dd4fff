// What CMediaAccessor answers unless a derived class knows better.
#include <MediaAccessor/media_accessor.h>

#include "support/text.h"

namespace Quorvex {

CMediaAccessor::CMediaAccessor() = default;
CMediaAccessor::~CMediaAccessor() = default;

bool CMediaAccessor::IsFlagged() const { return false; }

unsigned long CMediaAccessor::GetDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaAccessor::GetTypeDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetTypeDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaAccessor::GetTypeDescription(wchar_t* buffer, unsigned long capacity) const {
  return GetDescription(buffer, capacity);
}

void CMediaAccessor::Release() { delete this; }

}  // namespace Quorvex
