// WAVConversion: from a coding of wave files to 16-bit PCM.
#pragma once

#include <memory>
#include <span>

#include <MediaAccessor/result_code.h>

#include "compression/compression_manager.h"

namespace Quorvex {

/// A conversion by the compression manager, in one stage or, where no driver goes all the way, in
/// two. One thread at a time.
class WAVConversion {
 public:
  /// Finds a way to 16-bit samples of at most two channels; of more, the first two are kept. May
  /// throw std::bad_alloc.
  /// @param source  where the bytes to be converted will be. Not owned.
  /// @return QVERR_OK; QVERR_BAD_FORMAT when the manager offers none.
  QVERRORCODE_TAG Open(const WaveFormat& fileFormat, std::span<unsigned char> source);
  void Close() noexcept;
  bool IsOpen() const noexcept { return first_ != nullptr; }

  /// What is delivered, while open.
  const WaveFormat& Target() const noexcept { return target_; }

  /// As CompressionStream::Convert. @return QVERR_OK or QVERR_BAD_FORMAT.
  QVERRORCODE_TAG Convert(std::size_t bytes, ConvertExtent extent, std::size_t& used,
                          std::size_t& produced) noexcept;
  /// The samples of the last Convert, valid until the next.
  const short* Samples() const noexcept;

 private:
  std::unique_ptr<CompressionStream> first_;
  std::unique_ptr<CompressionStream> second_;  // null: one stage
  WaveFormat target_;
};

}  // namespace Quorvex
