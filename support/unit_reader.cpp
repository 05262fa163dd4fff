// A window of whole blocks over the file:
//
//     file     header | block | block | block | block | ...
//     buffer                  [ block   block   block ]
//     handed out                ^^^^^
#include "support/unit_reader.h"

#include <algorithm>

namespace Quorvex {
namespace {

// In bytes. Large enough that the calls to the system do not count, small enough that what is read
// is still in the processor's nearer cache when it is decoded.
constexpr std::size_t kWindow = std::size_t{64} * 1024;

}  // namespace

std::size_t UnitReader::Start(const UnitLayout& layout) noexcept {
  layout_ = layout;
  position_ = 0;
  filledUnits_ = usedUnits_ = 0;
  const std::size_t blockBytes = layout.unitBytes * layout.blockUnits;
  bufferUnits_ = std::max<std::size_t>(kWindow / blockBytes, 1) * layout.blockUnits;
  // No more than there is.
  const std::uint64_t size =
      std::min(layout.size, file_.Size() - std::min(file_.Size(), layout.offset));
  std::uint64_t units = size / layout.unitBytes;
  // Or than there may be, once a file that is being written has grown.
  if (layout.size == UnitLayout::kToTheEnd) {
    units = std::max<std::uint64_t>(units, std::min(layout.blockUnits, kWindow / layout.unitBytes));
  }
  units = std::max<std::uint64_t>(units, 1);
  bufferUnits_ = static_cast<std::size_t>(std::min<std::uint64_t>(bufferUnits_, units));
  if (!buffer_.Resize(bufferUnits_ * layout.unitBytes)) return 0;
  return std::min(bufferUnits_, layout.blockUnits);
}

QVERRORCODE_TAG UnitReader::Fill() noexcept {
  filledUnits_ = usedUnits_ = 0;
  const std::uint64_t wanted =
      std::min<std::uint64_t>(layout_.size - position_, buffer_.Count()) / layout_.unitBytes;
  if (wanted == 0) return QVERR_OK;
  std::size_t got = 0;
  const bool isRead = file_.ReadAt(layout_.offset + position_, buffer_.Data(),
                                   static_cast<std::size_t>(wanted) * layout_.unitBytes, got);
  filledUnits_ = got / layout_.unitBytes;
  position_ += filledUnits_ * layout_.unitBytes;
  // What stands before a place that cannot be read is good; the next call comes to that place.
  if (filledUnits_ > 0) return QVERR_OK;
  // Data of a known size was all there when the file was opened: it has been cut since.
  return !isRead || layout_.size != UnitLayout::kToTheEnd ? QVERR_FILE_IO : QVERR_OK;
}

QVERRORCODE_TAG UnitReader::Next(const unsigned char*& units, std::size_t& count) noexcept {
  units = nullptr;
  count = 0;
  if (usedUnits_ == filledUnits_) {
    const QVERRORCODE_TAG result = Fill();
    if (result != QVERR_OK) return result;
  }
  units = buffer_.Data() + usedUnits_ * layout_.unitBytes;
  count = std::min(filledUnits_ - usedUnits_, layout_.blockUnits);
  usedUnits_ += count;
  return QVERR_OK;
}

void UnitReader::Close() noexcept {
  file_.Close();
  buffer_.Reset();
}

}  // namespace Quorvex
