// IPPEncoder: a sink that codes 16-bit PCM into the frames of a speech codec.
#pragma once

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/media_sink.h>

namespace Quorvex {

/// Codes mono PCM. Samples that do not fill a frame are kept for the next Write; a Write without
/// samples ends the stream. G.729A looks 5 ms ahead, G.723.1 7.5 ms: the first frame begins with as
/// much silence. All frames have the same length, those of silence, too.
///
/// Calling order: create, SetSink, if wanted SetInputSampleRate, then Write. One thread at a time.
/// The sink may detach itself while it is written to, but neither write to the encoder, reset it
/// nor end it.
///
/// Slots: destructor 0, SetChannelCount 1, Write 2, Release 3, SetSink 4, GetCodecSampleRate 5,
/// GetCompressedFrameBytes 6, GetCodec 7, Reset 8, SetInputSampleRate 9, GetInputSampleRate 10.
class MEDIA_ACCESSOR_API IPPEncoder : public CMediaSink {
 public:
  /// @param codec  G729A to G723_1_63: the others have no encoder here.
  /// @return a new encoder, owned by the caller, who ends it with Release() (or see IPPEncoderPtr);
  ///         null when there is no such codec here, which the log (log.h) tells, or when memory
  ///         runs out. The licence is not asked for: see IPPCoder::IsLicensedCodec.
  static IPPEncoder* CreateInstance(IPPCoder::CODEC codec) noexcept;
  /// The same for G729A.
  static IPPEncoder* CreateInstance() noexcept;

  /// What SetChannelCount answers. @return QVERR_OK up to 1; QVERR_UNSUPPORTED_CHANNELS above.
  QVERRORCODE_TAG CheckChannelCount(int channels) { return SetChannelCount(channels); }

  /// Refuses what is not mono; nothing is kept. @return as CheckChannelCount.
  QVERRORCODE_TAG SetChannelCount(int channels) override = 0;

  /// Codes PCM and pushes the frames to the sink, which is told the number of BYTES; there is no
  /// push when no frame is full.
  /// @param data   16-bit samples; may be null when `count` is 0.
  /// @param count  in SAMPLES. 0 ends the stream: what the conversion still holds is taken, the
  ///               frame that was begun is filled up with zeros and coded. The sink is not told of
  ///               the end. More samples may follow: they begin a new stream for the conversion,
  ///               the codec goes on.
  /// @return QVERR_OK, or, in the order in which they are looked for:
  ///     QVERR_NOT_LICENSED      the codec may not be used
  ///     QVERR_NO_SINK           nothing was consumed
  ///     QVERR_INVALID_ARGUMENT  null data
  ///     QVERR_BAD_STATE         the conversion that SetInputSampleRate could not set up
  ///     QVERR_CREATE_FAILED     memory ran out, or the sink threw; samples may be lost
  ///     QVERR_BAD_FORMAT        the engine failed; the frames before were pushed, the samples from
  ///                             there on are lost
  ///     any other               the sink's own; what it was given is lost, and of samples that are
  ///                             converted the rest
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override = 0;

  /// Sets the sink that receives the frames. @param sink  not owned; null detaches.
  virtual void SetSink(CMediaSink* sink) = 0;

  /// Sampling frequency in Hz that the codec works at.
  virtual int GetCodecSampleRate() const = 0;

  /// Length of a frame in bytes.
  virtual int GetCompressedFrameBytes() const = 0;

  virtual IPPCoder::CODEC GetCodec() const = 0;

  /// Forgets the stream so far: what the codec and the conversion remember of it, and the frame
  /// that was begun. @return whether that went well.
  virtual bool Reset() = 0;

  /// Sets the sampling frequency of what will be written; another one than the codec's is
  /// converted by the filter of ResamplingMediaAccessor. Begins a new stream for the conversion.
  /// @param rate  in Hz; 0 stands for the codec's.
  /// @return one of two things, on purpose: `rate` itself when nothing is to be converted;
  ///         otherwise how the conversion could be set up: QVERR_OK (0); QVERR_BAD_STATE (603) for
  ///         a rate below 1, or frequencies too far apart for the filter; QVERR_CREATE_FAILED (600)
  ///         when memory runs out. After one of the latter two every Write fails with it, until a
  ///         call succeeds.
  virtual int SetInputSampleRate(int rate) = 0;

  /// What SetInputSampleRate was given last; 0 at first.
  virtual int GetInputSampleRate() const = 0;

 protected:
  IPPEncoder();
  ~IPPEncoder() override;
};

}  // namespace Quorvex
