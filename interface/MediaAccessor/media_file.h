// CMediaFile: a media file, opened for reading.
#pragma once

#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/media_accessor_channel_selector.h>

namespace Quorvex {

/// A media file. Its MediaAccessorChannelSelector face (the primary one) chooses what is delivered,
/// its CMediaAccessor face delivers it; a newly opened file delivers all channels averaged to one.
///
/// Lifecycle: closed -> Open -> open -> Close -> closed, as often as wanted. A failed Open leaves
/// the object closed and reusable. MediaFileClose ends the object in either state.
///
/// The order of the virtual operations is binary interface: slots 5 to 24 follow the five of
/// MediaAccessorChannelSelector. Derive from MultiChannelMediaFile rather than from this class to
/// write a reader.
class MEDIA_ACCESSOR_API CMediaFile : public MediaAccessorChannelSelector, public CMediaAccessor {
 public:
  /// Opens a file for reading.
  /// @param path  null counts as empty.
  /// @return QVERR_OK; QVERR_ALREADY_OPEN on an open object, whose file stays open;
  ///         QVERR_FILE_OPEN_FAILED when the file cannot be opened, which for the built-in readers
  ///         is anything but a regular file, and for two of them (media_file_functions.h) also what
  ///         has not even their header; QVERR_BAD_FORMAT when it is not of this format or cannot be
  ///         decoded; QVERR_BAD_FILE_NAME when a format opens an empty path;
  ///         QVERR_CREATE_FAILED when memory runs out.
  virtual QVERRORCODE_TAG Open(const wchar_t* path) = 0;
  /// The same for a narrow path, which is widened.
  virtual QVERRORCODE_TAG Open(const char* path) = 0;

  /// Closes the file. @return QVERR_OK; QVERR_FILE_NOT_OPEN when none is open.
  virtual QVERRORCODE_TAG Close() = 0;

  /// True between a successful Open and Close.
  virtual bool IsOpen() const = 0;

  /// Number of audio tracks; 1 unless a format says otherwise.
  virtual int GetAvailableTracks() const;

  /// The ids of the tracks, in track order.
  /// @param ids       receives one id, 0, when it is not null and `capacity` is at least 1.
  /// @return the number of tracks, 1 unless a format says otherwise.
  virtual unsigned long GetAvailableTrackIDs(int* ids, unsigned long capacity) const;

  /// Makes a track, counted from 0, the current one.
  /// @return QVERR_OK; QVERR_BAD_TRACK for a track that the file does not have (any but 0 here).
  virtual QVERRORCODE_TAG SelectTrack(int track);

  /// Number of channels of the current track as the file holds it, whatever is selected; 0 while
  /// closed.
  virtual int GetTrackChannelCount() const = 0;

  /// The current track, 0 unless a format says otherwise.
  virtual int GetCurrentTrack() const;

  /// Estimate of the duration in milliseconds, known without decoding; 0 when unknown or closed.
  virtual unsigned long GetMilliseconds() const = 0;

  /// The path that the file was opened with, empty while closed. Text rule: text.h.
  virtual unsigned long GetFileName(wchar_t* buffer, unsigned long capacity) const = 0;
  /// The same as narrow text.
  virtual unsigned long GetFileName(char* buffer, unsigned long capacity) const = 0;

  /// Number of video tracks; -1 from a reader without video.
  virtual long GetAvailableVideoTracks() const;
  /// Width of the picture in pixels; -1 from a reader without video.
  virtual long VideoWidth() const;
  /// Height of the picture in pixels; -1 from a reader without video.
  virtual long VideoHeight() const;

 protected:
  CMediaFile();

  /// The format's own open; the path is never null. Called on a closed object.
  virtual QVERRORCODE_TAG OpenFormat(const wchar_t* path) = 0;

 public:
  /// Names the encoding of the audio ("CCITT A-Law"); here the wide text of the next operation,
  /// converted. Text rule: text.h.
  virtual unsigned long GetFormatDescription(char* buffer, unsigned long capacity) const;
  /// The same as wide text; here empty. The built-in readers say "File not open" while closed.
  virtual unsigned long GetFormatDescription(wchar_t* buffer, unsigned long capacity) const;

 protected:
  /// The format's own read: the next block with all channels of the current track, interleaved.
  /// The block is valid until the next read; 0 frames with QVERR_OK is the end. Called on an open
  /// file only, with both outputs cleared.
  virtual QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames,
                                       void* context) = 0;

  /// The channel mode that Open starts with; kChannelModeAverage here.
  virtual int GetDefaultChannelMode() const;

 public:
  ~CMediaFile() override;

  /// Makes the track with an id the current one.
  /// @return SelectTrack's result; QVERR_BAD_TRACK for an id that the file does not have;
  ///         QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG SelectTrackByTrackId(int id);
};

}  // namespace Quorvex
