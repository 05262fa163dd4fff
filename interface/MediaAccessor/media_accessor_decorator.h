// CMediaAccessorDecorator: base of every accessor that wraps another one.
#pragma once

#include <MediaAccessor/media_accessor.h>

namespace Quorvex {

/// An accessor that reads from another accessor, its source.
///
/// A decorator never owns its source: neither the destructor nor SetSource releases one. Whoever
/// built a chain takes it down, the outermost object first.
///
/// Slots 0 to 9 are CMediaAccessor's; SetSource is 10, GetSource 11, a decorator's own operations
/// follow.
class MEDIA_ACCESSOR_API CMediaAccessorDecorator : public CMediaAccessor {
 public:
  CMediaAccessorDecorator();
  ~CMediaAccessorDecorator() override;

  /// The source's frequency in Hz; 0 without a source.
  unsigned long GetSamplingFrequency() const override;
  /// The source's channel count; 0 without a source.
  unsigned long GetChannelCount() const override;
  /// The source's answer; false without a source.
  bool IsFlagged() const override;

  /// Attaches a source and rebuilds the decorator's state from the source's format.
  /// @param source  not owned; it must outlive its use here.
  /// @return QVERR_OK; QVERR_NO_SOURCE for null and QVERR_INVALID_ARGUMENT for a source that
  ///         answers true to IsFlagged() or is this object itself, none of which changes anything.
  virtual QVERRORCODE_TAG SetSource(CMediaAccessor* source) = 0;

  /// The attached source, null when there is none. Not owned by the caller either.
  virtual CMediaAccessor* GetSource() const;

 protected:
  /// The common half of SetSource: checks the candidate and stores it.
  QVERRORCODE_TAG AttachSource(CMediaAccessor* source);

 private:
  CMediaAccessor* source_ = nullptr;
};

}  // namespace Quorvex
