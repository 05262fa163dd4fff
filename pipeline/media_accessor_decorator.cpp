// What every decorator shares: the source, and the queries that travel down to it.
#include <MediaAccessor/media_accessor_decorator.h>

#include "support/no_throw.h"

namespace Quorvex {

CMediaAccessorDecorator::CMediaAccessorDecorator() = default;
CMediaAccessorDecorator::~CMediaAccessorDecorator() = default;

unsigned long CMediaAccessorDecorator::GetSamplingFrequency() const {
  return NoThrowOr(0UL, [this] {
    const CMediaAccessor* source = GetSource();
    return source != nullptr ? source->GetSamplingFrequency() : 0UL;
  });
}

unsigned long CMediaAccessorDecorator::GetChannelCount() const {
  return NoThrowOr(0UL, [this] {
    const CMediaAccessor* source = GetSource();
    return source != nullptr ? source->GetChannelCount() : 0UL;
  });
}

bool CMediaAccessorDecorator::IsFlagged() const {
  return NoThrowOr(false, [this] {
    const CMediaAccessor* source = GetSource();
    return source != nullptr && source->IsFlagged();
  });
}

CMediaAccessor* CMediaAccessorDecorator::GetSource() const { return source_; }

QVERRORCODE_TAG CMediaAccessorDecorator::AttachSource(CMediaAccessor* source) {
  if (source == nullptr) return QVERR_NO_SOURCE;
  if (source == this || source->IsFlagged()) return QVERR_INVALID_ARGUMENT;
  source_ = source;
  return QVERR_OK;
}

}  // namespace Quorvex
