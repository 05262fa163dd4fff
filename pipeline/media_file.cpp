// What a media file answers unless a format knows better.
#include <MediaAccessor/media_file.h>

#include <algorithm>
#include <vector>

#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {

QVERRORCODE_TAG MediaAccessorChannelSelector::SelectChannel(int channel) {
  return SelectChannels(&channel, 1, kChannelModeAverage);
}

CMediaFile::CMediaFile() = default;
CMediaFile::~CMediaFile() = default;

int CMediaFile::GetAvailableTracks() const { return 1; }

unsigned long CMediaFile::GetAvailableTrackIDs(int* ids, unsigned long capacity) const {
  if (ids != nullptr && capacity >= 1) ids[0] = 0;
  return 1;
}

QVERRORCODE_TAG CMediaFile::SelectTrack(int track) {
  return track == 0 ? QVERR_OK : QVERR_BAD_TRACK;
}

int CMediaFile::GetCurrentTrack() const { return 0; }

long CMediaFile::GetAvailableVideoTracks() const { return -1; }
long CMediaFile::VideoWidth() const { return -1; }
long CMediaFile::VideoHeight() const { return -1; }

unsigned long CMediaFile::GetFormatDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetFormatDescription(text, size); },
      buffer, capacity);
}

unsigned long CMediaFile::GetFormatDescription(wchar_t* buffer, unsigned long capacity) const {
  return CopyText(L"", buffer, capacity);
}

int CMediaFile::GetDefaultChannelMode() const { return kChannelModeAverage; }

QVERRORCODE_TAG CMediaFile::SelectTrackByTrackId(int id) {
  return NoThrow([&] {
    std::vector<int> ids(GetAvailableTrackIDs(nullptr, 0));
    const unsigned long count =
        GetAvailableTrackIDs(ids.data(), static_cast<unsigned long>(ids.size()));
    ids.resize(std::min<std::size_t>(ids.size(), count));
    const auto found = std::find(ids.begin(), ids.end(), id);
    return found == ids.end() ? QVERR_BAD_TRACK
                              : SelectTrack(static_cast<int>(found - ids.begin()));
  });
}

}  // namespace Quorvex
