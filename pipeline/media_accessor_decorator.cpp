// What every decorator shares: the source, and the queries that travel down to it.
#include <MediaAccessor/media_accessor_decorator.h>

namespace Quorvex {

CMediaAccessorDecorator::CMediaAccessorDecorator() = default;
CMediaAccessorDecorator::~CMediaAccessorDecorator() = default;

unsigned long CMediaAccessorDecorator::GetSamplingFrequency() const {
  const CMediaAccessor* source = GetSource();
  return source != nullptr ? source->GetSamplingFrequency() : 0;
}

unsigned long CMediaAccessorDecorator::GetChannelCount() const {
  const CMediaAccessor* source = GetSource();
  return source != nullptr ? source->GetChannelCount() : 0;
}

bool CMediaAccessorDecorator::IsFlagged() const {
  const CMediaAccessor* source = GetSource();
  return source != nullptr && source->IsFlagged();
}

CMediaAccessor* CMediaAccessorDecorator::GetSource() const { return source_; }

QVERRORCODE_TAG CMediaAccessorDecorator::AttachSource(CMediaAccessor* source) {
  if (source == nullptr) return QVERR_NO_SOURCE;
  if (source->IsFlagged()) return QVERR_INVALID_ARGUMENT;
  source_ = source;
  return QVERR_OK;
}

}  // namespace Quorvex
