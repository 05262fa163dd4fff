// UnitMediaFile: the base of readers whose audio lies in the file as one stretch of equal units.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "support/built_in_media_file.h"
#include "support/cft_array.h"
#include "support/header_reader.h"
#include "support/unit_reader.h"

namespace Quorvex {

/// What a format's header says about the file.
struct UnitAudio {
  AudioFacts facts;
  UnitLayout layout;
  std::size_t unitFrames = 1;    // frames in a unit; the most, where BlockFrames is overridden
  bool needsNoDecoding = false;  // a unit is a frame of little-endian samples
  // The most that are delivered: fewer than the units make where the last of them is filled up.
  std::uint64_t frames = std::numeric_limits<std::uint64_t>::max();
};

static_assert(std::endian::native == std::endian::little, "some samples are delivered as read");

/// A format derives from it and supplies ReadHeader and Decode besides what BuiltInMediaFile asks
/// for. Everything else about opening, reading and closing is here.
template <class Interface = MultiChannelMediaFile>
class UnitMediaFile : public BuiltInMediaFile<Interface> {
 protected:
  /// Reads the header of a file that was just opened, and prepares for its first unit. Nothing is
  /// allocated for a file that it refuses. May throw std::bad_alloc.
  /// @param path  the file's, for formats whose name says something.
  /// @return QVERR_OK or why the file is refused.
  virtual QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader,
                                     UnitAudio& audio) = 0;
  /// Decodes units, in the order of the file. Not called for a plain file.
  /// @param samples  receives count x unitFrames frames of all channels, interleaved.
  /// @return QVERR_OK, or why the block is not delivered; reading may go on after it.
  virtual QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) = 0;
  /// How many frames the block has that was decoded last, of `count` units. For formats whose units
  /// are of different lengths; 0 when it holds only the beginning of something.
  virtual std::size_t BlockFrames(std::size_t count) const { return count * audio_.unitFrames; }

  const AudioFacts& Facts() const final { return audio_.facts; }

  QVERRORCODE_TAG OpenAudio(const wchar_t* path) final {
    if (!units_.Open(path)) return QVERR_FILE_OPEN_FAILED;
    HeaderReader reader(units_.File());
    const QVERRORCODE_TAG result = ReadHeader(path, reader, audio_);
    if (result != QVERR_OK) return result;
    const std::size_t units = units_.Start(audio_.layout);
    if (units == 0) return QVERR_CREATE_FAILED;
    const std::size_t frames = audio_.needsNoDecoding ? 0 : units * audio_.unitFrames;
    const auto channels = static_cast<std::size_t>(audio_.facts.channels);
    return samples_.Resize(frames * channels) ? QVERR_OK : QVERR_CREATE_FAILED;
  }

  void CloseFormat() override {
    units_.Close();
    samples_.Reset();
    audio_ = {};
  }

  QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames, void*) final {
    const unsigned char* units = nullptr;
    std::size_t count = 0;
    std::uint64_t taken = 0;
    do {
      QVERRORCODE_TAG result = units_.Next(units, count);
      if (result != QVERR_OK || count == 0) return result;
      if (!audio_.needsNoDecoding) result = Decode(units, count, samples_.Data());
      taken = std::min<std::uint64_t>(BlockFrames(count), audio_.frames);
      audio_.frames -= taken;
      if (result != QVERR_OK) return result;
    } while (taken == 0 && audio_.frames > 0);
    if (taken == 0) return QVERR_OK;
    samples = audio_.needsNoDecoding ? reinterpret_cast<const short*>(units) : samples_.Data();
    frames = static_cast<unsigned long>(taken);
    return QVERR_OK;
  }

 private:
  UnitReader units_;
  UnitAudio audio_;
  CFTarray<short> samples_;  // a decoded block
};

}  // namespace Quorvex
