// Opening files by name through the registry, and the one-shot questions, each of which is: open,
// ask, close.
#include <MediaAccessor/media_file_functions.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include <MediaAccessor/media_file.h>
#include <MediaAccessor/media_file_factory.h>
#include <MediaAccessor/ownership.h>
#include <MediaAccessor/text.h>

#include "registry/extension_key.h"
#include "registry/factory_registry.h"
#include "support/ft_log.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

QVERRORCODE_TAG FindCandidates(const std::wstring& path, CandidateList& candidates) {
  if (path.empty()) return QVERR_BAD_FILE_NAME;
  const QVERRORCODE_TAG result =
      FactoryRegistry::Instance().GetCandidates(ExtensionForOpening(path), candidates);
  if (result != QVERR_OK) return result;
  if (!candidates.factories.empty()) return QVERR_OK;
  LibraryLog().Printf(L"%s: no format is registered for its extension", path.c_str());
  return QVERR_BAD_FORMAT;
}

// Empty when the factory throws.
std::wstring FormatName(const CMediaFileFactory& factory) {
  return NoThrowOr(std::wstring(), [&] {
    return TextOf<wchar_t>([&](wchar_t* buffer, unsigned long capacity) {
      return factory.GetDescription(buffer, capacity);
    });
  });
}

QVERRORCODE_TAG OpenWith(const CMediaFileFactory& factory, const std::wstring& path,
                         MediaFilePtr& file) {
  return NoThrow([&] {
    file.reset(factory.CreateMediaFile());
    return file == nullptr ? QVERR_CREATE_FAILED : file->Open(path.c_str());
  });
}

void LogAttempt(const CMediaFileFactory& factory, const std::wstring& path,
                QVERRORCODE_TAG result) {
  if (LibraryLog().IsSilent()) return;
  LibraryLog().Printf(L"%s: %s: %d %s", path.c_str(), FormatName(factory).c_str(),
                      static_cast<int>(result), MediaAccessorGetResultNameWide(result));
}

QVERRORCODE_TAG OpenByName(const std::wstring& path, bool refuseFlagged, CMediaFile*& opened) {
  CandidateList candidates;
  QVERRORCODE_TAG result = FindCandidates(path, candidates);
  if (result != QVERR_OK) return result;
  for (const CMediaFileFactory* factory : candidates.factories) {
    MediaFilePtr file;
    result = OpenWith(*factory, path, file);
    LogAttempt(*factory, path, result);
    // Only "not of this format" lets the next candidate try.
    if (result == QVERR_BAD_FORMAT) continue;
    // A refused flagged file is a success without a file: callers look at both.
    if (result == QVERR_OK && !(refuseFlagged && file->IsFlagged())) opened = file.release();
    break;
  }
  return result;
}

template <class Character>
QVERRORCODE_TAG Open(const Character* path, CMediaFile*& file, bool refuseFlagged) noexcept {
  file = nullptr;
  return NoThrow([&] { return OpenByName(ToWide(path), refuseFlagged, file); });
}

// Opens a file, asks it something, closes it.
template <class Character, class Question>
QVERRORCODE_TAG Ask(const Character* path, const Question& question) noexcept {
  MediaFilePtr file;
  const QVERRORCODE_TAG result = MediaFileOpen(path, file);
  return result == QVERR_OK ? NoThrow([&] { return question(*file); }) : result;
}

unsigned long Milliseconds(std::uint64_t frames, unsigned long frequency) {
  if (frequency == 0) return 0;
  // In two steps, so that no product overflows.
  const std::uint64_t milliseconds =
      frames / frequency * 1000 + frames % frequency * 1000 / frequency;
  return static_cast<unsigned long>(
      std::min<std::uint64_t>(milliseconds, std::numeric_limits<unsigned long>::max()));
}

template <class Character>
QVERRORCODE_TAG GetMilliseconds(const Character* path, unsigned long& milliseconds,
                                bool exact) noexcept {
  milliseconds = 0;
  MediaFilePtr file;
  const QVERRORCODE_TAG result = MediaFileOpen(path, file, true);
  if (result != QVERR_OK) return result;
  return NoThrow([&] {
    if (file != nullptr && !exact) milliseconds = file->GetMilliseconds();
    if (milliseconds != 0) return QVERR_OK;
    CMediaAccessor* accessor = file.get();  // null for a refused file
    return MediaFileGetMilliseconds(accessor, milliseconds);
  });
}

template <class Character>
QVERRORCODE_TAG GetChannels(const Character* path, int track, int& channels) noexcept {
  channels = 0;
  return Ask(path, [&](CMediaFile& file) {
    const QVERRORCODE_TAG result = file.SelectTrack(track);
    if (result == QVERR_OK) channels = file.GetTrackChannelCount();
    return result;
  });
}

template <class Character>
QVERRORCODE_TAG GetChannels(const Character* path, int& channels) noexcept {
  channels = 0;
  return Ask(path, [&](CMediaFile& file) {
    channels = file.GetTrackChannelCount();
    return QVERR_OK;
  });
}

template <class Character>
QVERRORCODE_TAG GetTracks(const Character* path, int& tracks) noexcept {
  tracks = 0;
  return Ask(path, [&](CMediaFile& file) {
    tracks = file.GetAvailableTracks();
    return QVERR_OK;
  });
}

template <class Character>
QVERRORCODE_TAG GetTrackIDs(const Character* path, int* ids, unsigned long& count) noexcept {
  const unsigned long capacity = count;
  count = 0;
  return Ask(path, [&](CMediaFile& file) {
    count = file.GetAvailableTrackIDs(ids, capacity);
    return QVERR_OK;
  });
}

template <class Character>
QVERRORCODE_TAG GetVideoTracks(const Character* path, int& tracks) noexcept {
  tracks = 0;
  return Ask(path, [&](CMediaFile& file) {
    tracks = static_cast<int>(file.GetAvailableVideoTracks());
    return QVERR_OK;
  });
}

template <class Character>
QVERRORCODE_TAG GetVideoDimensions(const Character* path, long& width, long& height) noexcept {
  width = 0;
  height = 0;
  return Ask(path, [&](CMediaFile& file) {
    width = file.VideoWidth();
    height = file.VideoHeight();
    return QVERR_OK;
  });
}

// Whether a candidate whose format name begins with `family` opens the file.
template <class Character>
bool OpensWithFamily(const Character* path, std::wstring_view family) noexcept {
  return NoThrowOr(false, [&] {
    const std::wstring widePath = ToWide(path);
    CandidateList candidates;
    if (FindCandidates(widePath, candidates) != QVERR_OK) return false;
    for (const CMediaFileFactory* factory : candidates.factories) {
      MediaFilePtr file;
      if (FormatName(*factory).starts_with(family) &&
          OpenWith(*factory, widePath, file) == QVERR_OK)
        return true;
    }
    return false;
  });
}

constexpr std::wstring_view kDirectShow = L"DirectShow";
constexpr std::wstring_view kQuickTime = L"QuickTime";

}  // namespace

QVERRORCODE_TAG MediaFileOpen(const char* path, CMediaFile*& file, bool refuseFlagged) noexcept {
  return Open(path, file, refuseFlagged);
}

QVERRORCODE_TAG MediaFileOpen(const wchar_t* path, CMediaFile*& file, bool refuseFlagged) noexcept {
  return Open(path, file, refuseFlagged);
}

QVERRORCODE_TAG MediaFileClose(CMediaFile* file) noexcept {
  if (file == nullptr) return QVERR_INVALID_ARGUMENT;
  const QVERRORCODE_TAG result = NoThrow([&] { return file->IsOpen() ? file->Close() : QVERR_OK; });
  const QVERRORCODE_TAG ended = NoThrow([&] {
    file->Release();
    return QVERR_OK;
  });
  return result != QVERR_OK ? result : ended;
}

QVERRORCODE_TAG MediaFileGetMilliseconds(const char* path, unsigned long& milliseconds,
                                         bool exact) noexcept {
  return GetMilliseconds(path, milliseconds, exact);
}

QVERRORCODE_TAG MediaFileGetMilliseconds(const wchar_t* path, unsigned long& milliseconds,
                                         bool exact) noexcept {
  return GetMilliseconds(path, milliseconds, exact);
}

QVERRORCODE_TAG MediaFileGetMilliseconds(CMediaAccessor*& accessor,
                                         unsigned long& milliseconds) noexcept {
  milliseconds = 0;
  if (accessor == nullptr) return QVERR_INVALID_ARGUMENT;
  return NoThrow([&] {
    std::uint64_t total = 0;
    QVERRORCODE_TAG result = QVERR_OK;
    unsigned long frames = 0;
    do {
      const short* samples = nullptr;
      frames = 0;
      result = accessor->ReadBlock(samples, frames);
      if (result == QVERR_OK) total += frames;
    } while (result == QVERR_OK && frames > 0);
    milliseconds = Milliseconds(total, accessor->GetSamplingFrequency());
    return result;
  });
}

QVERRORCODE_TAG MediaFileGetAvailableChannels(const char* path, int track, int& channels) noexcept {
  return GetChannels(path, track, channels);
}

QVERRORCODE_TAG MediaFileGetAvailableChannels(const wchar_t* path, int track,
                                              int& channels) noexcept {
  return GetChannels(path, track, channels);
}

QVERRORCODE_TAG MediaFileGetAvailableChannels(const char* path, int& channels) noexcept {
  return GetChannels(path, channels);
}

QVERRORCODE_TAG MediaFileGetAvailableChannels(const wchar_t* path, int& channels) noexcept {
  return GetChannels(path, channels);
}

QVERRORCODE_TAG MediaFileGetAvailableTracks(const char* path, int& tracks) noexcept {
  return GetTracks(path, tracks);
}

QVERRORCODE_TAG MediaFileGetAvailableTracks(const wchar_t* path, int& tracks) noexcept {
  return GetTracks(path, tracks);
}

QVERRORCODE_TAG MediaFileGetAvailableTrackIDs(const char* path, int* ids,
                                              unsigned long& count) noexcept {
  return GetTrackIDs(path, ids, count);
}

QVERRORCODE_TAG MediaFileGetAvailableTrackIDs(const wchar_t* path, int* ids,
                                              unsigned long& count) noexcept {
  return GetTrackIDs(path, ids, count);
}

QVERRORCODE_TAG MediaFileGetAvailableVideoTracks(const char* path, int& tracks) noexcept {
  return GetVideoTracks(path, tracks);
}

QVERRORCODE_TAG MediaFileGetAvailableVideoTracks(const wchar_t* path, int& tracks) noexcept {
  return GetVideoTracks(path, tracks);
}

QVERRORCODE_TAG MediaFileGetVideoDimensions(const char* path, long& width, long& height) noexcept {
  return GetVideoDimensions(path, width, height);
}

QVERRORCODE_TAG MediaFileGetVideoDimensions(const wchar_t* path, long& width,
                                            long& height) noexcept {
  return GetVideoDimensions(path, width, height);
}

bool MediaFileIsDirectShowCompatible(const char* path) noexcept {
  return OpensWithFamily(path, kDirectShow);
}

bool MediaFileIsDirectShowCompatible(const wchar_t* path) noexcept {
  return OpensWithFamily(path, kDirectShow);
}

bool MediaFileIsQuickTimeCompatible(const char* path) noexcept {
  return OpensWithFamily(path, kQuickTime);
}

bool MediaFileIsQuickTimeCompatible(const wchar_t* path) noexcept {
  return OpensWithFamily(path, kQuickTime);
}

}  // namespace Quorvex
