// UnitReader: the audio of a file in which it lies as one stretch of equal units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include <MediaAccessor/result_code.h>

#include "platform/input_file.h"
#include "support/cft_array.h"

namespace Quorvex {

/// Where the audio lies. A unit is the smallest piece that is decoded at once: a frame of PCM, a
/// byte of two ADPCM samples.
struct UnitLayout {
  /// For data that ends where the file does.
  static constexpr std::uint64_t kToTheEnd = std::numeric_limits<std::uint64_t>::max();

  std::uint64_t offset = 0;  // of the first unit in the file, in bytes
  std::uint64_t size = 0;    // of all units, in bytes; or kToTheEnd
  std::size_t unitBytes = 0;
  std::size_t blockUnits = 0;  // the most that one block has
};

/// Hands out the units of a file in blocks. It reads ahead, so that small blocks are cheap.
class UnitReader {
 public:
  /// Opens the file, without reading any of it. False when that fails.
  bool Open(const wchar_t* path) { return file_.Open(path); }
  /// The open file, for its header.
  platform::InputFile& File() noexcept { return file_; }

  /// Begins at the first unit of a layout.
  /// @return the most units that a block of this file can have; 0 when memory runs out.
  std::size_t Start(const UnitLayout& layout) noexcept;

  /// The next block.
  /// @param units  receives the block, valid until the next call, aligned for 16-bit samples if its
  ///               size is a multiple of 2.
  /// @param count  receives its size in units: layout.blockUnits, except for the last block; 0
  ///               with QVERR_OK at the end. A unit that the file holds a part of does not count.
  /// @return QVERR_OK; QVERR_FILE_IO on a read error, or when the file has become shorter than the
  ///         size in its layout.
  QVERRORCODE_TAG Next(const unsigned char*& units, std::size_t& count) noexcept;

  /// Closes the file and gives the memory back.
  void Close() noexcept;

 private:
  QVERRORCODE_TAG Fill() noexcept;

  platform::InputFile file_;
  UnitLayout layout_;
  CFTarray<unsigned char> buffer_;
  std::size_t bufferUnits_ = 0;  // that the buffer has room for
  std::size_t filledUnits_ = 0;  // that it holds
  std::size_t usedUnits_ = 0;    // of those, that were handed out
  std::uint64_t position_ = 0;   // of the next byte to be read, from the first unit
};

}  // namespace Quorvex
