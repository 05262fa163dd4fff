// Opening a media file by name, and one-shot questions about a file.
//
// The candidates for the extension of the path (registry.h) are tried in their order. Only
// QVERR_BAD_FORMAT goes on to the next one: any other failure ends the search. So a missing .wav
// file is QVERR_FILE_OPEN_FAILED, the answer of the first reader that was asked to open it. A path
// without a dot after its last separator has the empty extension, for which only default factories
// stand unless somebody registered some.
//
// Results that every function here can return:
//     QVERR_BAD_FILE_NAME      the path is empty or null
//     QVERR_BAD_FORMAT         no candidate accepted the file, or there is none
//     QVERR_CREATE_FAILED      a factory could not create its file object, or memory ran out
//     QVERR_BUSY               the registry's lock could not be had within 1000 ms
//     any other                the failure of the candidate that ended the search
// Outputs are cleared before any work. Any thread may call; the files are independent.
//
// What the built-in formats deliver, and where they differ in their failures:
//
//     .wav        RIFF/WAVE in a strict subset. Blocks of up to one second. What that reader
//                 refuses is tried by the next one, and on Linux once more, by one for every coding
//                 of wave files, whose failures are other ones: input_wav_media_file.h.
//     .g722 .g729a .alaw .mulaw
//                 Coded audio without a header, mono: G.722 at 64 kbit/s and 16,000 Hz, G.729A in
//                 bare frames of 10 bytes and G.711 at 8,000 Hz. Each byte of G.722 is two samples,
//                 of G.729A eight, also when the last 10 ms are not whole; 10 ms whose bytes are
//                 all zero are silence, see ipp_decoder.h. Blocks are about 4,000 bytes of the
//                 file. This is the next reader of .wav files; it takes A-law and mu-law of 8 bits
//                 at any rate, with any number of channels, and G.729A (tag 0x83) of one channel,
//                 or of two whose frames alternate, always at 8,000 Hz. It also takes G.723.1
//                 (tags 0x22 and 0x42 with a block align of 20 or 24 bytes) of one channel, always
//                 at 8,000 Hz, whose frames of 24, 20, 4 and 1 bytes may be mixed; its blocks are
//                 about 120 bytes of the file. Such a file is read through when it is opened, for
//                 its length; what is beyond 256 MiB counts as frames of 24 bytes. The last frame
//                 of both ends where the "fact" chunk says, if that is within it. A RIFF/WAVE file
//                 under the other extensions is read by its header, too. QVERR_BAD_FORMAT for any
//                 other coding, also the one of tag 0x22 with 32 bytes; QVERR_NOT_LICENSED for
//                 G.729A and G.723.1 where they may not be used (library.h).
//     .au         Sun AU. Blocks of up to 1,024 frames. The audio runs to the end of the file,
//                 whatever size the header tells. Each sample is multiplied by 1 / channels, then
//                 rounded half away from zero and limited to 16 bits: a file of two channels is
//                 delivered at half its level, and averaging its channels divides once more. That
//                 is wanted. 24- and 32-bit integers keep their upper 16 bits; a floating-point
//                 NaN is 0. QVERR_FILE_OPEN_FAILED when the 24 bytes of the header cannot be read;
//                 QVERR_BAD_FORMAT for a coding that is not decoded (G.721, G.722, G.723), no
//                 channels, a rate of 0, a data offset below 24 or past the end, and so many
//                 channels that a block would be larger than 16 MiB.
//     .vox .vx8   Dialogic ADPCM: vox_media_file.h.
//     .opus       Ogg Opus at 48,000 Hz, 1 to 8 channels. Blocks of up to 2,048 samples of all
//                 channels together. QVERR_FILE_OPEN_FAILED for whatever libopusfile cannot open,
//                 also what is no Opus at all; QVERR_BAD_FORMAT when that library is not there.
//                 The length is 0, not known, for a chained stream whose last link is cut off in
//                 its headers. While reading, QVERR_BAD_FORMAT for a hole in the stream and for
//                 audio of a link with another channel count than the first: it is left out, and
//                 the next read goes on after it. The same for any other failure; then comes the
//                 end. The tags of the file are held in memory as long as it is open.
//
// Reading the others gives QVERR_FILE_IO when the system cannot read on, and from a .wav file that
// has become shorter than it was when it was opened; files of the other formats then end earlier,
// and are read further when they have grown.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

class CMediaAccessor;
class CMediaFile;

/// Opens a file with the first candidate that accepts it.
/// @param file           receives the open file, owned by the caller, who ends it with
///                       MediaFileClose; null on failure.
/// @param refuseFlagged  a file whose accessor answers true to IsFlagged() is not handed out:
///                       `file` stays null and the result is QVERR_OK. That is wanted: who passes
///                       true looks at both.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileOpen(const char* path, CMediaFile*& file,
                                                 bool refuseFlagged = false) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileOpen(const wchar_t* path, CMediaFile*& file,
                                                 bool refuseFlagged = false) noexcept;

/// Closes a file, if it is open, and ends the object.
/// @return QVERR_OK; QVERR_INVALID_ARGUMENT for null; the failure of Close, after which the object
///         is gone all the same.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileClose(CMediaFile* file) noexcept;

/// The length of a file's audio.
/// @param milliseconds  receives the length, truncated.
/// @param exact         false: the format's own estimate serves, unless it is 0. True: the file is
///                      decoded to its end and counted.
/// @return also the result of the last read, `milliseconds` then being the length up to it, and
///         QVERR_INVALID_ARGUMENT with 0 ms for a flagged file (IsFlagged), which is refused.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetMilliseconds(const char* path,
                                                            unsigned long& milliseconds,
                                                            bool exact) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetMilliseconds(const wchar_t* path,
                                                            unsigned long& milliseconds,
                                                            bool exact) noexcept;
/// The same for an accessor, which is read from where it stands to its end and stays the caller's;
/// the pointer itself is not changed.
/// @return the result of the last read; QVERR_INVALID_ARGUMENT with 0 ms for null.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetMilliseconds(CMediaAccessor*& accessor,
                                                            unsigned long& milliseconds) noexcept;

/// The channel count of a track, as the file holds it. @return also SelectTrack's result
/// (QVERR_BAD_TRACK).
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableChannels(const char* path, int track,
                                                                 int& channels) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableChannels(const wchar_t* path, int track,
                                                                 int& channels) noexcept;
/// The same for the track that is current after opening.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableChannels(const char* path,
                                                                 int& channels) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableChannels(const wchar_t* path,
                                                                 int& channels) noexcept;

/// The number of audio tracks.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableTracks(const char* path,
                                                               int& tracks) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableTracks(const wchar_t* path,
                                                               int& tracks) noexcept;

/// The ids of the audio tracks.
/// @param ids    receives them; may be null.
/// @param count  in: the capacity of `ids`; out: the number of tracks, 0 on failure.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableTrackIDs(const char* path, int* ids,
                                                                 unsigned long& count) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableTrackIDs(const wchar_t* path, int* ids,
                                                                 unsigned long& count) noexcept;

/// The number of video tracks; -1 from a reader without video.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableVideoTracks(const char* path,
                                                                    int& tracks) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetAvailableVideoTracks(const wchar_t* path,
                                                                    int& tracks) noexcept;

/// The size of the picture in pixels; -1 each from a reader without video.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetVideoDimensions(const char* path, long& width,
                                                               long& height) noexcept;
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaFileGetVideoDimensions(const wchar_t* path, long& width,
                                                               long& height) noexcept;

/// Whether a platform reader can open the file: a candidate for its path whose format name begins
/// with "DirectShow", respectively "QuickTime", and which opens it. False on any failure, and where
/// no such factory is registered.
MEDIA_ACCESSOR_API bool MediaFileIsDirectShowCompatible(const char* path) noexcept;
MEDIA_ACCESSOR_API bool MediaFileIsDirectShowCompatible(const wchar_t* path) noexcept;
MEDIA_ACCESSOR_API bool MediaFileIsQuickTimeCompatible(const char* path) noexcept;
MEDIA_ACCESSOR_API bool MediaFileIsQuickTimeCompatible(const wchar_t* path) noexcept;

}  // namespace Quorvex
