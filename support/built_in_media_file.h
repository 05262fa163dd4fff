// BuiltInMediaFile: what the built-in readers have in common.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include <MediaAccessor/multi_channel_media_file.h>

#include "support/allocator.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {

/// What a reader tells of the file that it has open.
struct AudioFacts {
  int channels = 0;
  std::uint32_t samplingFrequency = 0;  // in Hz
  unsigned long milliseconds = 0;       // truncated; 0 when the length is not known
};

/// A length in 32 bits: truncated; the largest value when it does not fit.
inline std::uint32_t ToMilliseconds(double milliseconds) noexcept {
  constexpr std::uint32_t kLongest = std::numeric_limits<std::uint32_t>::max();
  return milliseconds < kLongest ? static_cast<std::uint32_t>(milliseconds) : kLongest;
}

/// A reader derives from it and supplies OpenAudio, Facts, FormatName and EncodingName besides what
/// MultiChannelMediaFile asks for: CloseFormat and ReadRawBlock.
/// @tparam Interface  the public class that is implemented.
template <class Interface = MultiChannelMediaFile>
class BuiltInMediaFile : public Interface, public AllocatedObject {
 public:
  using CMediaAccessor::GetDescription;
  using CMediaFile::GetFormatDescription;

  unsigned long GetSamplingFrequency() const override { return Facts().samplingFrequency; }
  int GetTrackChannelCount() const override { return Facts().channels; }
  unsigned long GetMilliseconds() const override { return Facts().milliseconds; }
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyText(FormatName(), buffer, capacity);
  }
  unsigned long GetFormatDescription(wchar_t* buffer, unsigned long capacity) const override {
    return NoThrowOr(0UL, [&] {
      return CopyText(this->IsOpen() ? EncodingName() : L"File not open", buffer, capacity);
    });
  }

 protected:
  /// Opens the file and gets ready for its first block. After a failure, returned or thrown,
  /// CloseFormat is called.
  virtual QVERRORCODE_TAG OpenAudio(const wchar_t* path) = 0;
  /// Of the open file; all 0 while closed.
  virtual const AudioFacts& Facts() const = 0;
  virtual std::wstring_view FormatName() const = 0;
  /// Of the open file. May throw std::bad_alloc.
  virtual std::wstring EncodingName() const = 0;

  QVERRORCODE_TAG OpenFormat(const wchar_t* path) final {
    const QVERRORCODE_TAG result = NoThrow([&] { return OpenAudio(path); });
    if (result != QVERR_OK) this->CloseFormat();
    return result;
  }
};

}  // namespace Quorvex
