// CWAVFileWriter: writes what an accessor delivers into a wave file.
#pragma once

#include <MediaAccessor/media_file_writer.h>

namespace Quorvex {

/// The codings of a written wave file, with the wave format tag of each.
enum WAVOutputCoding : int {
  kWAVOutputPCM16 = 0,       ///< 1: 16-bit PCM
  kWAVOutputALaw = 1,        ///< 6
  kWAVOutputMuLaw = 2,       ///< 7
  kWAVOutputGSM610 = 3,      ///< 49: mono
  kWAVOutputG729A = 4,       ///< 131: mono or stereo, always 8000 Hz
  kWAVOutputTrueSpeech = 5,  ///< 34: G.723.1 at 5.3 kbit/s, mono, always 8000 Hz
};

/// A writer of RIFF/WAVE. The file has the source's frequency, G.729A and TrueSpeech excepted, and
/// the channels that it delivers. It appears under its name whole, when the source has ended and
/// everything is written, or not at all: until then it is a file with the name ".<16 hexadecimal
/// digits>.part" beside it, which goes if anything fails. A file that is replaced is replaced at
/// that moment; a link to a file is followed; on Linux its group and permissions are kept, as far
/// as they can be given. One thread at a time.
///
/// A-law and mu-law are coded as the reference of ITU-T G.191 does on Linux, and by the system's
/// codec on Windows. GSM 6.10 needs the module MediaAccessorFFmpeg.so on Linux, an encoder of the
/// system on Windows. The last frame of GSM, G.729A and TrueSpeech is filled up with silence;
/// the "fact" chunk, which follows the data of everything but PCM, tells the true count.
///
/// G.729A and TrueSpeech have 8000 Hz: audio of any other frequency is converted by the filter of
/// ResamplingMediaAccessor (resampling_media_accessor.h), and the header tells 8000 Hz. As the
/// encoders look ahead, everything is read back 5 ms later from G.729A, without the last 5 ms, and
/// 7.5 ms later from TrueSpeech, without the last 7.5 ms.
///
/// Each side of a stereo file of G.729A has an encoder of its own; their frames of 10 bytes
/// alternate, the left one first, so that a block of 20 bytes is 10 ms. The library's own reader
/// (media_file_functions.h) and FFmpeg take the sides apart again.
///
/// TrueSpeech is not the codec of this name here: the file holds frames of G.723.1, of 20 bytes for
/// 30 ms. The library's own reader reads them; others that know the tag have to look at the block
/// align, which is 32 for the codec of the name. The header tells 662 bytes a second.
///
/// The operations of CMediaSink other than Release are not for use: pushing audio in is
/// QVERR_FILE_NOT_OPEN.
///
/// Slots: CMediaFileWriter's 0 to 5, SetOutputCoding 6, GetDescription 7 (narrow) and 8 (wide).
class MEDIA_ACCESSOR_API CWAVFileWriter : public CMediaFileWriter {
 public:
  /// @return a new writer, owned by the caller, who ends it with Release (or see
  ///         MediaFileWriterPtr); null when memory runs out.
  static CWAVFileWriter* CreateInstance() noexcept;

  /// Chooses the coding of the files that are written from now on; 16-bit PCM unless called. The
  /// encoders of G.729A and TrueSpeech are made here, and kept for every later file until the other
  /// of the two is chosen.
  /// @param coding  of WAVOutputCoding.
  /// @return QVERR_OK; QVERR_ALREADY_OPEN during WriteFile; QVERR_INVALID_ARGUMENT for any other
  ///         number; to make encoders: QVERR_CODEC_NOT_LICENSED for G.729A and TrueSpeech where
  ///         they may not be used (library.h); QVERR_CREATE_FAILED when memory runs out. On failure
  ///         the coding stays what it was.
  virtual QVERRORCODE_TAG SetOutputCoding(int coding) = 0;

  /// Pulls the source to its end and writes it.
  /// @param source   not owned; read from where it stands to its end.
  /// @param path     null counts as empty.
  /// @param replace  whether an existing file is replaced.
  /// @return QVERR_OK, or why there is no new file:
  ///     QVERR_NO_SOURCE              `source` is null
  ///     QVERR_BAD_FILE_NAME          the path is empty
  ///     QVERR_ALREADY_OPEN           called from within a WriteFile of this object
  ///     QVERR_NO_SAMPLING_FREQUENCY  the source has none
  ///     QVERR_BAD_CHANNEL_COUNT      it delivers no channel
  ///     QVERR_UNSUPPORTED_CHANNELS   it delivers more than 32,767, of G.729A more than 2, or
  ///                                  changes their number
  ///     QVERR_MONO_ONLY              several channels for TrueSpeech
  ///     QVERR_BAD_FORMAT             the system does not code that: GSM 6.10 of several channels,
  ///                                  or without its encoder
  ///     QVERR_INVALID_ARGUMENT       a frequency that the header cannot tell
  ///     QVERR_BAD_STATE              a frequency that cannot be converted to 8000 Hz: it is more
  ///                                  than about 62 times higher, or 1,024 times lower
  ///     QVERR_NOT_LICENSED           the licence of the coding ended after it was chosen
  ///     QVERR_FILE_CREATE_FAILED     the file exists and is not to be replaced, or cannot be
  ///                                  created; only a regular file is ever replaced
  ///     QVERR_PATH_NOT_FOUND         its directory does not exist
  ///     QVERR_ACCESS_DENIED          the directory, or the file to be replaced, may not be written
  ///     QVERR_FILE_WRITE_FAILED      the disk is full, or the file would outgrow what a RIFF file
  ///                                  can hold: 4 GiB, on Windows 2 GiB
  ///     QVERR_CREATE_FAILED          memory ran out, or the source threw an exception
  ///     any other                    the source's own failure, as it is
  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const char* path, bool replace) override = 0;
  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const wchar_t* path, bool replace) override = 0;

  /// "WAV File Writer". Copied and counted as every text of the library: see text.h.
  virtual unsigned long GetDescription(char* buffer, unsigned long capacity) const = 0;
  virtual unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const = 0;

 protected:
  CWAVFileWriter();
  ~CWAVFileWriter() override;
};

}  // namespace Quorvex
