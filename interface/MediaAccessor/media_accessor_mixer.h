// MediaAccessorMixer: reduces interleaved channels to the selected ones, or to their sum or
// average.
#pragma once

#include <MediaAccessor/media_accessor_channel_selector.h>
#include <MediaAccessor/media_accessor_decorator.h>
#include <MediaAccessor/media_sink.h>

namespace Quorvex {

/// Turns interleaved 16-bit audio into what was selected: one channel with the sum or the average
/// of the selected channels, or the selected channels kept apart.
///
/// It is fed in one of two ways: Write pushes a block in, and ReadBlock hands the result out or
/// the target receives it; or SetSource attaches an accessor, and ReadBlock pulls from it.
///
/// Arithmetic: a sum is formed in 32 bits; averaging divides by the number of selected channels,
/// truncating towards zero; the result is clipped to -32767..32767. The lower bound is -32767, not
/// -32768, on purpose. Nothing is clipped where channels are kept apart or the input has one
/// channel.
///
/// After a refused selection nothing is selected: combining nothing is silence, keeping nothing
/// apart delivers blocks of 0 frames, until something is selected.
///
/// Until it knows its input channel count every operation but the selection queries returns
/// QVERR_UNSUPPORTED_CHANNELS.
///
/// Slots of the primary table: destructor 0, SetChannelCount 1, Write 2, Release 3, SetTarget 4.
class MEDIA_ACCESSOR_API MediaAccessorMixer : public CMediaSink,
                                              public MediaAccessorChannelSelector,
                                              public CMediaAccessorDecorator {
 public:
  /// @return a new mixer, owned by the caller, who ends it with Release(); null when memory runs
  /// out.
  static MediaAccessorMixer* CreateInstance() noexcept;

  /// Sets the number of interleaved channels of the blocks that come in. When nothing is selected
  /// yet, every channel is selected in kChannelModeAverage; an existing selection stays. The target
  /// is told the output channel count, its answer is not looked at.
  /// @return QVERR_OK; QVERR_BAD_CHANNEL_COUNT for a count below 1, which changes nothing;
  ///         QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG SetChannelCount(int channels) override = 0;

  /// Mixes a block. Without a target the result waits for ReadBlock; blocks that are pushed before
  /// it is read are appended where channels are combined or left out, and replace what waits where
  /// the input is copied as it stands (one channel, or as many kept apart as came in).
  /// @param data   interleaved 16-bit samples; null, or a count of 0, is the end of the stream,
  ///               which is handed on to the target.
  /// @param count  in bytes; a last incomplete frame is ignored.
  /// @return QVERR_OK; QVERR_UNSUPPORTED_CHANNELS when the input channel count is unknown or the
  ///         selection holds a channel that the input does not have (it can, after a new channel
  ///         count) and is not copied as it stands; otherwise the target's result.
  ///         Samples for which there is no memory are dropped.
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override = 0;

  void Release() override = 0;

  /// Attaches the sink that receives every finished block and is told the output channel count
  /// whenever that may have changed. It is pushed bytes: samples x 2.
  /// @param target  not owned; null detaches.
  virtual void SetTarget(CMediaSink* target) = 0;

  /// Attaches a source to pull from. Its channel count becomes the input channel count, and every
  /// channel is selected in kChannelModeAverage. See CMediaAccessorDecorator for the results; also
  /// QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override = 0;

  /// Reads a block. Without a source it is what was pushed since the last read, or that same block
  /// again. With a source it is the source's next block, mixed; a source of ONE channel yields the
  /// mixer's own buffer, which that path does not fill: this is wanted, so select channels on such
  /// a source itself. After the source's end (0 frames) more reads ask the source again.
  /// @return QVERR_OK; QVERR_UNSUPPORTED_CHANNELS when the input channel count is unknown, differs
  ///         from the source's present one, or the selection does not fit it; the source's failure.
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                            void* context = nullptr) override = 0;

 protected:
  MediaAccessorMixer() = default;
  ~MediaAccessorMixer() override;
};

}  // namespace Quorvex
