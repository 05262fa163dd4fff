/* What the library and the module for further codings agree on: a C interface, so that the two may
 * be compiled apart. The module exports one function, MediaAccessorGetCodingModule. */
#ifndef MEDIA_ACCESSOR_COMPRESSION_MODULE_ABI_H
#define MEDIA_ACCESSOR_COMPRESSION_MODULE_ABI_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Raised with every change below. */
#define MEDIA_ACCESSOR_CODING_MODULE_VERSION 1u

/* A format record, see wave_format.h. */
struct MediaAccessorCoding {
  uint32_t tag;
  uint32_t channels;
  uint32_t samplesPerSecond;
  uint32_t averageBytesPerSecond;
  uint32_t blockAlign;
  uint32_t bitsPerSample;
  const unsigned char* extra; /* valid during the call */
  size_t extraBytes;
};

/* See ConvertExtent in compression_manager.h. */
enum MediaAccessorConvertExtent {
  MEDIA_ACCESSOR_CONVERT_WHOLE_BLOCKS,
  MEDIA_ACCESSOR_CONVERT_ANYTHING,
  MEDIA_ACCESSOR_CONVERT_END
};

/* A decoder or an encoder at work. One thread at a time. */
struct MediaAccessorCoder;

/* The functions. None of them throws. */
struct MediaAccessorCodingModule {
  uint32_t version; /* MEDIA_ACCESSOR_CODING_MODULE_VERSION */

  /* A decoder to interleaved 16-bit samples of as many channels, at the same frequency. Null when
   * the coding is not known or its record makes no sense. */
  struct MediaAccessorCoder* (*openDecoder)(const struct MediaAccessorCoding* source);

  /* Completes the record of a coding for interleaved 16-bit samples: its tag, channels and
   * frequency are given, the other numbers are set. `extra` points to memory of the module that
   * stays valid. 0 when it cannot be encoded to. */
  int (*completeEncoding)(struct MediaAccessorCoding* target);
  /* An encoder to a completed record. Null on failure. */
  struct MediaAccessorCoder* (*openEncoder)(const struct MediaAccessorCoding* target);

  /* The room for output that a conversion of so many bytes wants. */
  size_t (*outputBytes)(const struct MediaAccessorCoder* coder, size_t sourceBytes);
  /* As Converter::Convert in posix/compression_driver.h. 0 when the data cannot be converted. */
  int (*convert)(struct MediaAccessorCoder* coder, const unsigned char* source, size_t sourceBytes,
                 enum MediaAccessorConvertExtent extent, unsigned char* output, size_t outputBytes,
                 size_t* used, size_t* produced);
  void (*close)(struct MediaAccessorCoder* coder);
};

/* The module's one exported function. Null when it has not the version that is asked for. Any
 * thread; always the same answer. */
typedef const struct MediaAccessorCodingModule* MediaAccessorGetCodingModuleFunction(
    uint32_t version);

#ifdef __cplusplus
}
#endif

#endif
