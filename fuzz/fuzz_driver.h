// The fuzzer's bytes as a conversion by one driver of the compression manager.
//
//     piece8 more8 wanted8 other8 record data      wanted and other: see Want
//
// A wave file without its first 16 bytes is such an input: what precedes the record there is its
// size.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

#include "compression/posix/compression_driver.h"
#include "fuzz/fuzz_input.h"

namespace fuzz {

/// A record as it stands in a wave file: that of PCM may end before the size of what follows.
inline Quorvex::WaveFormat TakeRecord(Input& input) {
  constexpr std::size_t kMostExtra = 4096;
  Quorvex::WaveFormat format;
  format.tag = input.Take<std::uint16_t>();
  format.channels = input.Take<std::uint16_t>();
  format.samplesPerSecond = input.Take<std::uint32_t>();
  format.averageBytesPerSecond = input.Take<std::uint32_t>();
  format.blockAlign = input.Take<std::uint16_t>();
  format.bitsPerSample = input.Take<std::uint16_t>();
  if (format.tag != Quorvex::kWaveTagPCM) {
    format.extra = input.TakeBytes(std::min<std::size_t>(input.Take<std::uint16_t>(), kMostExtra));
  }
  return format;
}

inline bool IsSame(const Quorvex::WaveFormat& a, const Quorvex::WaveFormat& b) {
  return a.tag == b.tag && a.channels == b.channels && a.samplesPerSecond == b.samplesPerSecond &&
         a.averageBytesPerSecond == b.averageBytesPerSecond && a.blockAlign == b.blockAlign &&
         a.bitsPerSample == b.bitsPerSample && a.extra == b.extra;
}

/// Which format a source is to become, with some of its fields.
struct Want {
  /// @param wanted  bits 0 to 3: fields that are not given; 4 to 7: fields that are `other`, and
  ///                not what 16-bit PCM has.
  Want(const Quorvex::WaveFormat& source, unsigned wanted, std::uint8_t other)
      : target(Quorvex::PCM16Format(source.channels, source.samplesPerSecond)),
        fields(Quorvex::kAllFields & ~(wanted << 16)) {
    if ((wanted & 0x10) != 0) target.tag = other;
    if ((wanted & 0x20) != 0) target.channels = other;
    if ((wanted & 0x40) != 0) target.samplesPerSecond = other;
    if ((wanted & 0x80) != 0) target.bitsPerSample = other;
    target.extra = {other};
  }

  bool IsMetBy(const Quorvex::WaveFormat& made) const {
    using namespace Quorvex;
    return ((fields & kSuggestTag) == 0 || made.tag == target.tag) &&
           ((fields & kSuggestChannels) == 0 || made.channels == target.channels) &&
           ((fields & kSuggestSamplesPerSecond) == 0 ||
            made.samplesPerSecond == target.samplesPerSecond) &&
           ((fields & kSuggestBitsPerSample) == 0 || made.bitsPerSample == target.bitsPerSample);
  }

  Quorvex::WaveFormat target;
  unsigned fields;
};

/// A suggestion, which has to be whole, to say what was wanted and to be made again. Refusals have
/// to be consistent, too. @return whether one was made; then it is in `target`.
inline bool Suggest(const Quorvex::CompressionDriver& driver, const Quorvex::WaveFormat& source,
                    const Want& want, Quorvex::WaveFormat& target) {
  using namespace Quorvex;
  WaveFormat whole = want.target;
  const bool isPossible = driver.Suggest(source, whole, kAllFields) == Suggestion::kMade;
  Require((driver.Open(source, want.target) != nullptr) == isPossible);

  target = want.target;
  const Suggestion suggestion = driver.Suggest(source, target, want.fields);
  if (suggestion != Suggestion::kMade) {
    Require(suggestion == Suggestion::kNotPossible && IsSame(target, want.target));
    return false;
  }
  Require(want.IsMetBy(target) && target.channels >= 1);
  Require(target.bitsPerSample == 8 || target.bitsPerSample == 16);
  Require(target.blockAlign == target.channels * target.bitsPerSample / 8);
  Require(target.averageBytesPerSecond == target.samplesPerSecond * target.blockAlign);
  WaveFormat again = target;
  Require(driver.Suggest(source, again, kAllFields) == Suggestion::kMade && IsSame(again, target));
  return true;
}

/// Converts everything in pieces, of which the first are given with kWholeBlocks, as a reader does.
/// Source and output have exactly the room that they are promised, so that a sanitizer sees each
/// step beyond.
/// @param block  bytes of the smallest piece that can be converted.
/// @param piece  bytes given at once, at least a block.
inline Bytes ConvertAll(Quorvex::Converter& converter, std::span<const unsigned char> data,
                        std::size_t block, std::size_t piece, std::size_t frame) {
  using Quorvex::ConvertExtent;
  const std::size_t room = converter.OutputBytes(piece);
  const auto output = std::make_unique<unsigned char[]>(room);
  Bytes converted;
  const auto convert = [&](std::span<const unsigned char> given, ConvertExtent extent) {
    const Bytes source(given.begin(), given.end());
    std::size_t used = 0;
    std::size_t produced = 0;
    Require(converter.Convert(source, extent, {output.get(), room}, used, produced));
    Require(used <= given.size() && produced <= room && produced % frame == 0);
    const std::size_t rest = given.size() - used;
    const bool areWholeBlocks = used % block == 0 && rest < block;
    const bool isPartOfBlock = extent == ConvertExtent::kAnything && given.size() < block;
    Require(isPartOfBlock || areWholeBlocks);
    converted.insert(converted.end(), output.get(), output.get() + produced);
    return used;
  };
  bool hasLeftover = false;
  while (!data.empty()) {
    const auto given = data.first(std::min(piece, data.size()));
    std::size_t used =
        convert(given, hasLeftover ? ConvertExtent::kAnything : ConvertExtent::kWholeBlocks);
    if (used == 0 && hasLeftover) used = given.size();
    hasLeftover = hasLeftover || used < given.size();
    data = data.subspan(used);
  }
  // None of these drivers holds anything back.
  const std::size_t before = converted.size();
  convert({}, ConvertExtent::kEnd);
  Require(converted.size() == before);
  return converted;
}

/// One input of a target.
/// @param tag         the source's, or 0: the input says it.
/// @param blockBytes  tells the bytes of the smallest piece of a source that can be converted.
template <class BlockBytes>
int FuzzDriver(const Quorvex::CompressionDriver& driver, std::uint16_t tag,
               const BlockBytes& blockBytes, const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::size_t pieceBlocks = input.Take<std::uint8_t>() + std::size_t{1};
  const std::size_t more = input.Take<std::uint8_t>();
  const unsigned wanted = input.Take<std::uint8_t>();
  const auto other = input.Take<std::uint8_t>();
  Quorvex::WaveFormat source = TakeRecord(input);
  if (tag != 0) source.tag = tag;
  // Which the manager refuses before it asks a driver.
  if (source.channels == 0 || source.samplesPerSecond == 0) return 0;

  Quorvex::WaveFormat target;
  if (!Suggest(driver, source, Want(source, wanted, other), target)) return 0;
  const std::size_t block = blockBytes(source);
  const auto convert = [&](std::size_t piece) {
    const auto converter = driver.Open(source, target);
    Require(converter != nullptr);
    return ConvertAll(*converter, input.Rest(), block, piece, target.blockAlign);
  };
  const std::size_t most = std::max(block, input.Rest().size());
  const Bytes atOnce = convert(most);
  Require(convert(std::min(most, pieceBlocks * block + more)) == atOnce);
  return 0;
}

}  // namespace fuzz
