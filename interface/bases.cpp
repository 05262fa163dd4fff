// The parts of the public base classes that are not abstract.
#include <algorithm>
#include <vector>

#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/media_accessor_channel_selector.h>
#include <MediaAccessor/media_file.h>
#include <MediaAccessor/media_file_factory.h>
#include <MediaAccessor/media_file_writer.h>
#include <MediaAccessor/media_sink.h>
#include <MediaAccessor/text.h>

#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

// The narrow form of a text operation: asks for the wide text and converts it.
template <class WideOperation>
unsigned long NarrowForm(const WideOperation& operation, char* buffer, unsigned long capacity) {
  unsigned long result = 0;
  NoThrow([&] {
    result = CopyText(TextOf<wchar_t>(operation), buffer, capacity);
    return QVERR_OK;
  });
  return result;
}

}  // namespace

CMediaAccessor::CMediaAccessor() = default;
CMediaAccessor::~CMediaAccessor() = default;

bool CMediaAccessor::IsFlagged() const { return false; }

unsigned long CMediaAccessor::GetDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaAccessor::GetTypeDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetTypeDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaAccessor::GetTypeDescription(wchar_t* buffer, unsigned long capacity) const {
  return GetDescription(buffer, capacity);
}

void CMediaAccessor::Release() { delete this; }

CMediaSink::CMediaSink() = default;
CMediaSink::~CMediaSink() = default;

void CMediaSink::Release() { delete this; }

CMediaFileWriter::CMediaFileWriter() = default;
CMediaFileWriter::~CMediaFileWriter() = default;

CMediaFileFactory::CMediaFileFactory() = default;
CMediaFileFactory::~CMediaFileFactory() = default;

unsigned long CMediaFileFactory::GetDescription(char* buffer, unsigned long capacity) const {
  return NarrowForm(
      [this](wchar_t* text, unsigned long size) { return GetDescription(text, size); }, buffer,
      capacity);
}

unsigned long CMediaFileFactory::GetExtension(unsigned long index, char* buffer,
                                              unsigned long capacity) const {
  unsigned long length = 0;
  NoThrow([&] {
    // An extension is reported by its bare length, so the rule of TextOf does not fit.
    const unsigned long wideLength = GetExtension(index, static_cast<wchar_t*>(nullptr), 0);
    if (wideLength == 0) return QVERR_OK;
    std::wstring wide(wideLength + 1, L'\0');
    wide.resize(std::min(GetExtension(index, wide.data(), wideLength + 1), wideLength));
    length = CopyText(wide, static_cast<char*>(nullptr), 0) - 1;
    if (buffer != nullptr && capacity > 0) CopyText(wide, buffer, capacity);
    return QVERR_OK;
  });
  return length;
}

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
