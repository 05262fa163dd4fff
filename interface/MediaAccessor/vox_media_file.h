// CVOXMediaFile: files of Dialogic ADPCM, which say nothing about themselves.
#pragma once

#include <MediaAccessor/multi_channel_media_file.h>

namespace Quorvex {

/// Reads headerless Dialogic/OKI ADPCM, 4 bits a sample, mono, delivered in blocks of up to 2,048
/// samples. Every file is a valid one, and none tells its sampling frequency, so that is chosen:
///
///     .vx8 in any case of letters      8,000 Hz, whatever was set
///     SetSamplingFrequency on a file   that
///     anything else                    the library's default, 6,000 Hz unless it was set
///
/// MediaFileOpen opens .vox and .vx8 files with such an object too; one is made here to set the
/// frequency of a single file. Samples have 12 bits, delivered in 16-bit scale. The predictor
/// leaks, by 127/128 a sample, on purpose: decoders without that give other samples. The format
/// description is "6000Hz ADPCM", with the frequency of the file.
///
/// Open fails only for what every file can fail for, never with QVERR_BAD_FORMAT. ReadBlock also
/// returns QVERR_FILE_IO when the system cannot read on.
///
/// SetSamplingFrequency is the first slot after those of MultiChannelMediaFile, entry 32 of the
/// primary table.
class MEDIA_ACCESSOR_API CVOXMediaFile : public MultiChannelMediaFile {
 public:
  /// @return a new, closed file, owned by the caller, who ends it with MediaFileClose (or see
  ///         VOXMediaFilePtr); null when memory runs out.
  static CVOXMediaFile* CreateInstance() noexcept;

  /// Sets the frequency of the files that are opened from now on, for the whole process. Any thread
  /// may call.
  /// @param hertz  ignored when it is 0, or does not fit 32 bits.
  static void SetDefaultSamplingFrequency(unsigned long hertz) noexcept;

  /// Sets the frequency with which this object opens files, from now on and until it is set again:
  /// closing a file does not take it back.
  /// @param hertz  0: the library's default.
  /// @return QVERR_OK; QVERR_ALREADY_OPEN while a file is open; QVERR_INVALID_ARGUMENT when it does
  ///         not fit 32 bits.
  virtual QVERRORCODE_TAG SetSamplingFrequency(unsigned long hertz) = 0;

  ~CVOXMediaFile() override;

 protected:
  CVOXMediaFile();
};

}  // namespace Quorvex
