// ResamplingMediaAccessor: delivers another accessor's audio at another sampling frequency.
#pragma once

#include <MediaAccessor/media_accessor_decorator.h>

namespace Quorvex {

/// Converts the sampling frequency of its source, channel by channel, by a fixed polyphase filter:
/// a sinc under a Kaiser window. An input sample at the distance d, in input samples, from an
/// output sample contributes to it with the factor
///
///     0.98 c sinc(c d) I0(9 sqrt(1 - (d/H)^2)) / I0(9)      for |d| < H, else 0
///     c = 0.95 min(1, out/in)      H = 32 max(1, in/out), cut to a whole number
///
/// where sinc(x) is sin(pi x) / (pi x), and I0 the modified Bessel function of order 0.
///
///     delay         0: output sample n is at the time of input sample n x in/out. The filter looks
///                   ahead: a sample is delivered once the source has given H + 1 input samples
///                   after the one at or before that time, or has ended
///     length        N input frames give ceil(N x out/in) output frames, exactly, the tail included
///     gain          0.98 (-0.18 dB) at 0 Hz. Beside that, at parts of the lower of the two Nyquist
///                   frequencies: the same within 0.001 dB to 0.8, -0.4 dB at 0.9, -6 dB at 0.95,
///                   below -91 dB from 1.05 on and below -92.5 dB from 1.1 on
///     beginning     the stream begins on silence
///     rounding      to the nearest 16-bit value; louder samples are clipped
///
/// Samples do not depend on the sizes of the source's blocks. Another processor may give a sample
/// another value, by 1 at most.
///
/// It delivers once both a source and an output frequency are set, in either order. Setting either
/// begins a new stream, on silence.
///
/// Its descriptions are "Source: ", the source's description, and
/// " Output Sampling Frequency: 16000" with the frequency that is set; without a source
/// "No source.".
///
/// Slots 0 to 11 are CMediaAccessorDecorator's; SetOutputSamplingFrequency is 12.
class MEDIA_ACCESSOR_API ResamplingMediaAccessor : public CMediaAccessorDecorator {
 public:
  /// @return a new accessor without a source, its output frequency 0, owned by the caller, who ends
  ///         it with Release() (or see ResamplingMediaAccessorPtr); null when memory runs out.
  static ResamplingMediaAccessor* CreateInstance() noexcept;

  /// The output frequency in Hz; 0 when none is set, or one below 1.
  unsigned long GetSamplingFrequency() const override = 0;

  /// The source's channel count when source and frequency were last set; 0 before.
  unsigned long GetChannelCount() const override = 0;

  /// Attaches a source and begins a new stream. Where the two frequencies cannot be converted, or
  /// memory runs out, this returns QVERR_OK, and the reads that follow say so: on purpose, since
  /// the other of the two settings may still come.
  /// @param source  not owned; it must outlive its use here.
  /// @return QVERR_OK; QVERR_NO_SOURCE for null and QVERR_INVALID_ARGUMENT for a source that
  ///         answers true to IsFlagged() or is this object itself, none of which changes anything.
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override = 0;

  /// Sets the output frequency and begins a new stream from the present source.
  /// @param hertz  below 1 there is none.
  /// @return QVERR_OK, always: what does not suit, the reads report, also a source that SetSource
  ///         would refuse by now.
  virtual QVERRORCODE_TAG SetOutputSamplingFrequency(int hertz) = 0;

  /// Reads on in the source until there is something to deliver, so that 0 frames always are an
  /// end. The source's end (0 frames) gives the tail of the stream, what silence after it would
  /// give, and 0 frames after that; every further read asks the source again, and should it go on,
  /// the stream does, with nothing reset.
  ///
  /// A block has as many channels as the source has now. When the source's channel count changes
  /// without SetSource, say by a selection on a file, channels beyond those that it had are silent,
  /// and one that went and comes back was silent meanwhile; GetChannelCount still tells the old
  /// count, and so many samples a frame may be read in any case. The frequency of the source is the
  /// one that it had, too. Call SetSource again to follow it. A source without channels, now or
  /// when it was set, gives 0 frames.
  /// @param context  handed on to the source.
  /// @return QVERR_OK; QVERR_INVALID_ARGUMENT without a source (not QVERR_NO_SOURCE, on purpose) or
  ///         output frequency, or when the source was refused as the frequency was set; the
  ///         source's failure as it is; QVERR_BAD_STATE when the source's frequency is unknown or
  ///         does not fit an int, is 62.46875 (1999/32) times the output frequency or more, or
  ///         below 1/1024 of it; QVERR_CREATE_FAILED when there was no memory for setting up, or
  ///         for any sample of a block: where there is for some, the others are dropped. A set-up
  ///         that failed is told after a block of the source was read, which is lost.
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                            void* context = nullptr) override = 0;

  ~ResamplingMediaAccessor() override;

 protected:
  ResamplingMediaAccessor();
};

}  // namespace Quorvex
