// CInputWAVMediaFile: wave files of every coding that the system's compression manager decodes.
#pragma once

#include <MediaAccessor/multi_channel_media_file.h>

namespace Quorvex {

class CMediaFileFactory;

/// Reads RIFF/WAVE. 16-bit PCM with tag 1 is delivered as it stands, with all its channels;
/// everything else goes through the audio compression manager, which delivers at most two channels:
/// of more, the first two are kept. What the manager converts to 16-bit samples:
///
///     Linux     PCM of 8, 24, 32 and 64 bits: the upper 16 are kept
///               floating point of 32 and 64 bits: rounded to the nearest value, the even one of
///               two, and limited to 16 bits; a NaN is 0
///               A-law, mu-law
///               IMA and Microsoft ADPCM, with the samples of libsndfile and sox
///               by a module beside the library, MediaAccessorFFmpeg.so, every other coding with a
///               registered tag that FFmpeg decodes, with its samples: GSM 6.10, TrueSpeech, MP3,
///               G.726, AC-3, ...
///     Windows   what the codecs that are installed there offer
///     both      WAVE_FORMAT_EXTENSIBLE of those
///
/// MediaFileOpen opens .wav files with such an object on Linux, after the portable reader has
/// refused them. On Windows, where the system's own readers stand in its place, it is not
/// registered: make one here, or hand Factory() to MediaAccessorRegistryAdd.
///
/// Differences from the portable reader: chunks of odd size have a pad byte; nothing behind the end
/// of the RIFF chunk counts; two "fmt ", two "data" or two "fact" chunks are refused wherever they
/// stand; a file whose data is cut off is refused.
///
/// Open:
///     QVERR_FILE_NOT_FOUND     there is no such file
///     QVERR_FILE_OPEN_FAILED   there is, and it cannot be opened
///     QVERR_FILE_IO            the data, or a chunk that is wanted, is cut off
///     QVERR_BAD_FORMAT         not a wave file, or one that contradicts itself, a "fmt " chunk of
///                              more than 4,096 bytes, more than 100,000 chunks, no channels, a
///                              rate of 0, or a coding that the manager does not convert; the log
///                              says when a module is missing for it
/// ReadBlock:
///     QVERR_FILE_IO            the file is shorter than it was when it was opened, or cannot be
///                              read
///     QVERR_BAD_FORMAT         the data cannot be converted; or it says itself, as MP3 does, that
///                              it has another rate than the header tells
///
/// A block has at most as many frames as 128 KiB of the file give. Data that ends in the middle of
/// a frame ends with the last whole one; a part of an ADPCM block is decoded. Coded audio comes in
/// whole blocks, which may be some frames more than the "fact" chunk counts. The length is the one
/// that the "fact" chunk tells; without one that of the data, for codings at its average rate; 0
/// when neither is known; the largest number when it does not fit 32 bits.
///
/// The format description names the coding and its registrant: "WAVE_FORMAT_GSM610 - Microsoft
/// Corporation"; "Unknown format" for a tag that is not in the registry of 1998, such as
/// WAVE_FORMAT_EXTENSIBLE.
class MEDIA_ACCESSOR_API CInputWAVMediaFile : public MultiChannelMediaFile {
 public:
  /// @return a new, closed file, owned by the caller, who ends it with MediaFileClose (or see
  ///         MediaFilePtr); null when memory runs out.
  static CInputWAVMediaFile* CreateInstance() noexcept;

  /// The factory of such objects, "Microsoft WAV Format", for the extension "WAV". It lives as long
  /// as the library. Any thread.
  static const CMediaFileFactory& Factory() noexcept;

  ~CInputWAVMediaFile() override;

 protected:
  CInputWAVMediaFile();
};

}  // namespace Quorvex
