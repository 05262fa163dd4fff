// The object behind the module's functions: a decoder or an encoder.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "compression/module_abi.h"

/// The functions of MediaAccessorCodingModule, as operations.
struct MediaAccessorCoder {
  MediaAccessorCoder() = default;
  virtual ~MediaAccessorCoder() = default;
  MediaAccessorCoder(const MediaAccessorCoder&) = delete;
  MediaAccessorCoder& operator=(const MediaAccessorCoder&) = delete;

  virtual std::size_t OutputBytes(std::size_t sourceBytes) const noexcept = 0;
  virtual bool Convert(std::span<const unsigned char> source, MediaAccessorConvertExtent extent,
                       std::span<unsigned char> output, std::size_t& used,
                       std::size_t& produced) noexcept = 0;
};

namespace Quorvex::ffmpeg {

/// As the functions of the same names in MediaAccessorCodingModule. May throw std::bad_alloc.
std::unique_ptr<MediaAccessorCoder> OpenDecoder(const MediaAccessorCoding& source);
std::unique_ptr<MediaAccessorCoder> OpenEncoder(const MediaAccessorCoding& target);
bool CompleteEncoding(MediaAccessorCoding& target) noexcept;

/// How many bytes of a source are for a conversion to take, `block` being those of a block.
inline std::size_t Convertible(std::size_t bytes, MediaAccessorConvertExtent extent,
                               std::size_t block) {
  const bool isShort = bytes < block && extent == MEDIA_ACCESSOR_CONVERT_ANYTHING;
  return isShort || extent == MEDIA_ACCESSOR_CONVERT_END ? bytes : bytes - bytes % block;
}

}  // namespace Quorvex::ffmpeg
