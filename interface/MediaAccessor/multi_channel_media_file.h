// MultiChannelMediaFile: the base of every reader, in the library and in applications.
#pragma once

#include <MediaAccessor/media_file.h>

#include <string>

namespace Quorvex {

class MediaAccessorMixer;

/// Turns a format that delivers interleaved 16-bit blocks of all its channels into a CMediaFile
/// whose caller chooses channels. A reader that derives from it supplies these operations:
///
///     OpenFormat, ReadRawBlock      the format itself (CMediaFile)
///     CloseFormat                   the counterpart of OpenFormat
///     GetTrackChannelCount, GetSamplingFrequency, GetMilliseconds
///     GetDescription (wide)         the format's name
///
/// and, where the base's answer does not fit, GetFormatDescription (wide) and
/// GetDefaultChannelMode. A reader whose SelectTrack changes the channel count calls SelectChannels
/// there: the selection is checked against the count of that moment.
class MEDIA_ACCESSOR_API MultiChannelMediaFile : public CMediaFile {
 public:
  using CMediaAccessor::GetDescription;

  ~MultiChannelMediaFile() override;

  /// See MediaAccessorChannelSelector. May be called again at any time: it holds from the next
  /// block.
  QVERRORCODE_TAG SelectChannels(const int* channels, int count, int mode) override;
  int GetSelectedChannelCount() const override;
  int GetSelectedChannels(int* channels, int capacity) const override;
  int GetChannelMode() const override;

  QVERRORCODE_TAG Open(const wchar_t* path) override;
  QVERRORCODE_TAG Open(const char* path) override;
  QVERRORCODE_TAG Close() override;
  bool IsOpen() const override;
  unsigned long GetFileName(wchar_t* buffer, unsigned long capacity) const override;
  unsigned long GetFileName(char* buffer, unsigned long capacity) const override;

  /// Channels of a delivered block: the number selected in kChannelModeSeparate, else 1; 0 while
  /// closed.
  unsigned long GetChannelCount() const override;

  /// Reads a raw block and delivers the selected channels of it. A block that needs no mixing (a
  /// one-channel file, or all channels kept apart) is the reader's own, not a copy.
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                            void* context = nullptr) override;

  /// GetFormatDescription's text.
  unsigned long GetTypeDescription(char* buffer, unsigned long capacity) const override;
  unsigned long GetTypeDescription(wchar_t* buffer, unsigned long capacity) const override;

 protected:
  MultiChannelMediaFile();

  /// Undoes OpenFormat. Called once for each successful OpenFormat, by Close or when the rest of
  /// Open fails. Destructors do not call it: a reader's own members clean up after themselves.
  virtual void CloseFormat() = 0;

 private:
  std::wstring fileName_;
  MediaAccessorMixer* mixer_ = nullptr;  // owned; exists while the file is open
};

}  // namespace Quorvex
