// CompressionDriver: one entry in the list of what converts what.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "compression/compression_manager.h"

namespace Quorvex {

/// A conversion that is going on.
class Converter {
 public:
  virtual ~Converter() = default;
  Converter() = default;
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  /// The room that `Convert` wants for so many bytes. It may do with less than the most that can
  /// come of them: what does not fit is left unused, or held back.
  virtual std::size_t OutputBytes(std::size_t sourceBytes) const noexcept = 0;

  /// As CompressionStream::Convert. With kAnything, a source shorter than a block is converted as
  /// far as it goes; a longer one up to its last whole block.
  /// @param output    has the room of OutputBytes; aligned for 16-bit samples.
  /// @param used      0 before, as `produced` is.
  virtual bool Convert(std::span<const unsigned char> source, ConvertExtent extent,
                       std::span<unsigned char> output, std::size_t& used,
                       std::size_t& produced) noexcept = 0;
};

/// What converts some formats. Any thread may call.
class CompressionDriver {
 public:
  virtual ~CompressionDriver() = default;

  /// As SuggestFormat. `target` is changed only when the suggestion is made.
  virtual Suggestion Suggest(const WaveFormat& source, WaveFormat& target,
                             unsigned fields) const = 0;
  /// @return null for a pair of formats that Suggest does not make, or when the conversion cannot
  ///         begin.
  virtual std::unique_ptr<Converter> Open(const WaveFormat& source,
                                          const WaveFormat& target) const = 0;
};

/// The list's own entries: PCM of every width, floating point and G.711 in both directions; the two
/// ADPCM codings, decoded.
const CompressionDriver& PCMDriver();
const CompressionDriver& IMAADPCMDriver();
const CompressionDriver& MicrosoftADPCMDriver();

/// Puts a driver before the others, for good. For tests.
/// @param driver  must live as long as the process.
void AddCompressionDriver(const CompressionDriver& driver);

/// Every field is given.
inline constexpr unsigned kAllFields =
    kSuggestTag | kSuggestChannels | kSuggestSamplesPerSecond | kSuggestBitsPerSample;

/// Completes `target` with what `offered` says. False, with nothing changed, when a given field
/// says something else.
bool CompleteSuggestion(const WaveFormat& offered, WaveFormat& target, unsigned fields);

}  // namespace Quorvex
