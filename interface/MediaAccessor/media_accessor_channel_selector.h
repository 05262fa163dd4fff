// MediaAccessorChannelSelector: which channels of a multi-channel source are delivered, and how.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

/// How selected channels are combined. Any other value of a mode argument sums like
/// kChannelModeSum: that is wanted.
inline constexpr int kChannelModeSum = 0;        ///< one channel: the clipped sum
inline constexpr int kChannelModeAverage = 1;    ///< one channel: the sum divided by their number
inline constexpr int kChannelModeSeparate = 10;  ///< the selected channels, interleaved

/// The interface by which a caller restricts a multi-channel source to chosen channels.
///
/// The order of the virtual operations is binary interface: slots 0 to 4. There is no virtual
/// destructor: an object is ended through its other interface.
class MEDIA_ACCESSOR_API MediaAccessorChannelSelector {
 public:
  MediaAccessorChannelSelector() = default;
  MediaAccessorChannelSelector(const MediaAccessorChannelSelector&) = delete;
  MediaAccessorChannelSelector& operator=(const MediaAccessorChannelSelector&) = delete;

  /// Delivers one channel alone: the same as SelectChannels(&channel, 1, kChannelModeAverage).
  virtual QVERRORCODE_TAG SelectChannel(int channel);

  /// Chooses the delivered channels and the way in which they are combined.
  /// @param channels  indices from 0, in the order wanted; repeats are allowed. Null, an empty list
  ///                  or a list with a negative index before any index that is too large selects
  ///                  every channel.
  /// @param count     length of the list.
  /// @param mode      kChannelModeAverage, kChannelModeSum or kChannelModeSeparate.
  /// @return QVERR_OK; QVERR_UNSUPPORTED_CHANNELS for an index that the source does not have, which
  ///         leaves nothing selected and the mode as it was; QVERR_FILE_NOT_OPEN from a closed
  ///         file.
  virtual QVERRORCODE_TAG SelectChannels(const int* channels, int count, int mode) = 0;

  /// Number of selected channels; 0 for a closed file.
  virtual int GetSelectedChannelCount() const = 0;

  /// Copies the selection.
  /// @param channels  receives the indices when it is not null and `capacity` is at least their
  ///                  number; otherwise nothing is written. A closed file writes `capacity` zeros.
  /// @return the number of selected channels; 0 for a closed file.
  virtual int GetSelectedChannels(int* channels, int capacity) const = 0;

  /// The mode in force; kChannelModeSeparate for a closed file.
  virtual int GetChannelMode() const = 0;

 protected:
  ~MediaAccessorChannelSelector() = default;
};

}  // namespace Quorvex
