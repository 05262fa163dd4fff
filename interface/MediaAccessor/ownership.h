// Owning what the library hands out: a null-safe Release, and a std::unique_ptr for every type.
#pragma once

#include <MediaAccessor/g711_decoder.h>
#include <MediaAccessor/ipp_decoder.h>
#include <MediaAccessor/ipp_encoder.h>
#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/media_accessor_mixer.h>
#include <MediaAccessor/media_file.h>
#include <MediaAccessor/media_file_functions.h>
#include <MediaAccessor/media_file_writer.h>
#include <MediaAccessor/media_sink.h>
#include <MediaAccessor/resampling_media_accessor.h>
#include <MediaAccessor/vox_media_file.h>
#include <MediaAccessor/wav_file_writer.h>

#include <memory>

namespace Quorvex {

/// Ends an object made by a CreateInstance() or a factory. Does nothing for null, where calling the
/// member through a null pointer would be undefined.
template <class Object>
void Release(Object* object) {
  if (object != nullptr) object->Release();
}

struct ObjectReleaser {
  template <class Object>
  void operator()(Object* object) const {
    Release(object);
  }
};

struct MediaFileCloser {
  void operator()(CMediaFile* file) const noexcept { MediaFileClose(file); }
};

using MediaAccessorPtr = std::unique_ptr<CMediaAccessor, ObjectReleaser>;
using MediaAccessorMixerPtr = std::unique_ptr<MediaAccessorMixer, ObjectReleaser>;
using ResamplingMediaAccessorPtr = std::unique_ptr<ResamplingMediaAccessor, ObjectReleaser>;
using MediaSinkPtr = std::unique_ptr<CMediaSink, ObjectReleaser>;
using MediaFileWriterPtr = std::unique_ptr<CMediaFileWriter, ObjectReleaser>;
using WAVFileWriterPtr = std::unique_ptr<CWAVFileWriter, ObjectReleaser>;
using G711DecoderPtr = std::unique_ptr<CG711Decoder, ObjectReleaser>;
using IPPDecoderPtr = std::unique_ptr<IPPDecoder, ObjectReleaser>;
using IPPEncoderPtr = std::unique_ptr<IPPEncoder, ObjectReleaser>;
using MediaFilePtr = std::unique_ptr<CMediaFile, MediaFileCloser>;
using VOXMediaFilePtr = std::unique_ptr<CVOXMediaFile, MediaFileCloser>;

/// MediaFileOpen into an owner. What `file` held before is closed first.
template <class Character>
QVERRORCODE_TAG MediaFileOpen(const Character* path, MediaFilePtr& file,
                              bool refuseFlagged = false) {
  file.reset();
  CMediaFile* opened = nullptr;
  const QVERRORCODE_TAG result = MediaFileOpen(path, opened, refuseFlagged);
  file.reset(opened);
  return result;
}

}  // namespace Quorvex
