// CG711Decoder: a sink that expands G.711 bytes and pushes 16-bit PCM on.
#pragma once

#include <MediaAccessor/media_sink.h>

namespace Quorvex {

/// Expands A-law or mu-law, one byte a sample, to linear 16-bit PCM for another sink, in the 16-bit
/// scale of ITU-T G.711's reference expansion (A-law 0x00 is -5504, mu-law 0x00 is -32124).
///
/// Calling order: SetLaw, SetChannelCount and SetTarget in any order, then Write.
///
/// Slots: destructor 0, SetChannelCount 1, Write 2, Release 3, SetLaw 4, SetTarget 5.
class MEDIA_ACCESSOR_API CG711Decoder : public CMediaSink {
 public:
  static constexpr int kSelectALaw = 1;
  static constexpr int kSelectMuLaw = 2;

  /// @return a new decoder, owned by the caller, who ends it with Release(); null when memory runs
  ///         out.
  static CG711Decoder* CreateInstance() noexcept;

  /// Stores the number of interleaved channels. @return QVERR_OK, whatever the count; Write refuses
  /// one below 1.
  QVERRORCODE_TAG SetChannelCount(int channels) override = 0;

  /// Expands a block and pushes it to the target.
  /// @param data   channels x count bytes; may be null when `count` is 0.
  /// @param count  in FRAMES. The target is given count x 2, whatever the channel count: that unit
  ///               is wanted. A count of 0 forwards an empty block.
  /// @return the target's result; QVERR_INVALID_ARGUMENT until law, channel count and target are
  ///         set, for null data, or when count x 2 does not fit its type; QVERR_CREATE_FAILED when
  ///         memory runs out.
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override = 0;

  /// Chooses the law. @return QVERR_OK for kSelectALaw and kSelectMuLaw; QVERR_INVALID_ARGUMENT for
  /// any other selector, which leaves the law unchanged.
  virtual QVERRORCODE_TAG SetLaw(int selector) = 0;

  /// Sets the sink that receives the samples. @param target  not owned; null detaches.
  virtual void SetTarget(CMediaSink* target) = 0;

 protected:
  CG711Decoder() = default;
  ~CG711Decoder() override;
};

}  // namespace Quorvex
