// IPPCoder: the speech codecs that the library has, and which of them need a licence.
#pragma once

#include <MediaAccessor/export.h>

namespace Quorvex {

/// What the speech decoder and the speech encoder share.
class MEDIA_ACCESSOR_API IPPCoder {
 public:
  /// A codec with its way of laying out frames. All are mono; G.729 Annex A and G.723.1 at 8 kHz,
  /// G.722 and G.722.1 at 16 kHz.
  enum CODEC : int {
    G729A = 1,           ///< 8,000 bit/s: bare frames of 10 bytes for 80 samples
    G729A_HEADERED = 2,  ///< the same with a byte before each frame, 11 in all, which is skipped
    G723_1_53 = 3,       ///< 5,300 bit/s: frames of 20 bytes for 240 samples
    /// 6,300 bit/s: frames of 24 bytes for 240 samples. Its decoder takes every frame of G.723.1.
    G723_1_63 = 4,
    /// 64,000, 56,000 or 48,000 bit/s. The codec itself has no frames; here one is 10 ms, 160
    /// samples for 80, 70 or 60 bytes. At 64,000 a byte is a code word for two samples; at 56,000
    /// and 48,000 the code words of 7 and 6 bits are packed without gaps, the first in the lowest
    /// bits, as libspandsp packs them.
    G722 = 5,
    G722_1 = 6,  ///< 24,000 or 32,000 bit/s: frames of 60 or 80 bytes for 320 samples
  };

  /// Length in bytes of the frame of G.723.1 that begins with this byte: 24, 20, 4 or 1. For
  /// streams in which they differ, see ipp_decoder.h.
  static constexpr int G7231FrameBytes(unsigned char firstByte) noexcept {
    constexpr int kBytes[] = {24, 20, 4, 1};
    return kBytes[firstByte & 3];
  }

  /// Whether a codec may be used: the decision that library.h describes, on the feature "G729" for
  /// the two of G.729A and on "TrueSpeech" for the two of G.723.1. The others need no licence.
  /// @return false also for a number that is no codec. Whether the codec is there is another
  ///         matter: see CreateInstance of the decoder and the encoder. Any thread.
  static bool IsLicensedCodec(CODEC codec) noexcept;
};

}  // namespace Quorvex
