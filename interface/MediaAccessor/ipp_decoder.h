// IPPDecoder: frames of a speech codec in, 16-bit PCM on to a sink.
#pragma once

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/media_sink.h>

#include <cstdint>

namespace Quorvex {

/// Decodes a stream of frames that all have the same size.
///
/// The two low bits of the first byte of a G.723.1 frame tell its true size: 0 is 24 bytes (6,300
/// bit/s), 1 is 20 (5,300 bit/s), 2 is 4 (silence), 3 is 1 (silence goes on): see
/// IPPCoder::G7231FrameBytes. Where they alternate, make a decoder for G723_1_63 and give it each
/// frame in a Decode of its own, which fills it up to 24 bytes and looks at the true ones. The
/// decoder for G723_1_53 does the same with frames of up to 20 bytes, and refuses those of 24.
///
/// Calling order: create, SetSink, if wanted SetKeepTail and EnableErasureMarker, then Decode as
/// often as there is data; Reset before a stream that has nothing to do with the one before. One
/// thread at a time.
///
/// Two kinds of frames become silence without being decoded, on purpose: one whose bytes are all
/// zero, and, after EnableErasureMarker, one that begins with a byte of 3. The skipped byte of
/// G729A_HEADERED counts for neither.
///
/// The sink may detach itself or reset the decoder while it is written to, but neither decode nor
/// end the object.
///
/// Slots: destructor 0, CheckChannelCount 1, Decode 2, Release 3, SetOutput 4, GetSampleRate 5,
/// GetCompressedFrameBytes 6, GetCodec 7, Reset 8, SetSink 9, SetKeepTail 10, GetCodecSampleRate
/// 11, SamplesForBytes 12, EnableErasureMarker 13.
class MEDIA_ACCESSOR_API IPPDecoder {
 protected:
  virtual ~IPPDecoder();  // in slot 0, so before the others

 public:
  /// @param bitRate  in bit/s, looked at for G722 and G722_1 only; 0 stands for 64,000, which
  ///                 G722_1 does not have.
  /// @return a new decoder, owned by the caller, who ends it with Release() (or see IPPDecoderPtr);
  ///         null when there is no such codec here, or not at this bit rate, which the log (log.h)
  ///         tells, or when memory runs out. The licence is not asked for: see
  ///         IPPCoder::IsLicensedCodec.
  static IPPDecoder* CreateInstance(IPPCoder::CODEC codec, long bitRate) noexcept;
  /// The same with a bit rate of 0.
  static IPPDecoder* CreateInstance(IPPCoder::CODEC codec) noexcept;
  /// The same for G729A.
  static IPPDecoder* CreateInstance() noexcept;

  IPPDecoder(const IPPDecoder&) = delete;
  IPPDecoder& operator=(const IPPDecoder&) = delete;

  /// @return QVERR_OK up to 1; QVERR_UNSUPPORTED_CHANNELS above.
  virtual QVERRORCODE_TAG CheckChannelCount(int channels) const = 0;

  /// Decodes `count` bytes and pushes the PCM to the sink, which is told the number of SAMPLES.
  /// Mostly that is one push for all of it; there is none when there is no PCM. Bytes at the end
  /// that make no whole frame are filled up with zeros and decoded as one, on purpose: they are not
  /// kept for the next call.
  ///
  /// An early stop, by the sink or by a frame that cannot be decoded, loses what comes after it.
  /// With SetKeepTail(true) the last frame of the data, or what there is of it, is kept when it was
  /// not reached, and the next call begins with it. So the frames of a stream that goes on do not
  /// get out of step. A call too short to complete a kept frame adds to it and decodes nothing;
  /// what is still kept at the end of a stream is lost.
  /// @param data   may be null when `count` is 0.
  /// @return QVERR_OK, or, in the order in which they are looked for:
  ///     QVERR_NOT_LICENSED      G.729A and G.723.1 only: the codec may not be used
  ///     QVERR_NO_SINK           nothing was consumed
  ///     QVERR_INVALID_ARGUMENT  null data
  ///     QVERR_CREATE_FAILED     memory for the PCM ran out, and nothing was consumed; or the
  ///                             sink threw
  ///     QVERR_BAD_FORMAT        a frame could not be decoded; what was decoded before was pushed
  ///     any other               the sink's own, which ends the decoding; what it was given is lost
  virtual QVERRORCODE_TAG Decode(const std::uint8_t* data, std::uint32_t count) = 0;

  /// Ends the object; here `delete this`. The null-safe form is Release in ownership.h.
  virtual void Release();

  /// The same as SetSink.
  virtual void SetOutput(CMediaSink* sink) = 0;

  /// The same as GetCodecSampleRate.
  virtual int GetSampleRate() const = 0;

  /// Length of a frame in bytes, the skipped byte of G729A_HEADERED included.
  virtual int GetCompressedFrameBytes() const = 0;

  virtual IPPCoder::CODEC GetCodec() const = 0;

  /// Forgets the stream so far: what the codec remembers of it, and kept bytes. @return true.
  virtual bool Reset() = 0;

  /// Sets the sink that receives the PCM. @param sink  not owned; null detaches.
  virtual void SetSink(CMediaSink* sink) = 0;

  /// Whether an early stop keeps the end of the data for the next call: see Decode. False at first.
  virtual void SetKeepTail(bool keep) = 0;

  /// Sampling frequency of the PCM in Hz.
  virtual int GetCodecSampleRate() const = 0;

  /// How many samples so many bytes of whole frames hold; a part of a frame does not count.
  virtual std::uint64_t SamplesForBytes(std::uint32_t bytes) const = 0;

  /// From now on a frame whose first byte is 3 is silence. Not for G.723.1 with silence frames:
  /// what goes on in one of those is a quiet noise.
  virtual void EnableErasureMarker() = 0;

 protected:
  IPPDecoder();
};

}  // namespace Quorvex
