// Region by region: code words of vectors with a sign for each level that is not zero, until the
// bits run out; what is left at zero, or was not coded, is filled with noise.
#include "codecs/engines/g722_1/coefficients.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/prefix_code.h"
#include "codecs/engines/g722_1/vector_tables.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::Multiply;
using fixed_point::Saturate;
using fixed_point::Word;

// Magnitudes of a region, by level.
template <std::size_t kLevels>
std::array<Word, kLevels> Magnitudes(const std::array<Word, kLevels>& centroids,
                                     Word deviation) noexcept {
  std::array<Word, kLevels> magnitudes;
  for (std::size_t i = 0; i < kLevels; ++i) {
    magnitudes[i] = Saturate(Long{deviation} * centroids[i] >> 12);
  }
  return magnitudes;
}

// What a code word stands for: levels, each but 0 with a sign that follows.
template <std::size_t kDimension>
struct Levels {
  std::array<std::uint8_t, kDimension> levels;
  std::uint8_t signCount;
};

// By the value of the code word, whose digits are the levels, the first the most significant.
template <std::size_t kDimension, std::size_t kLevels>
constexpr auto MakeLevels() noexcept {
  constexpr std::size_t kVectors = [] {
    std::size_t count = 1;
    for (std::size_t k = 0; k < kDimension; ++k) count *= kLevels;
    return count;
  }();
  std::array<Levels<kDimension>, kVectors> result{};
  for (std::size_t i = 0; i < kVectors; ++i) {
    std::size_t digits = i;
    for (std::size_t k = kDimension; k-- > 0; digits /= kLevels) {
      result[i].levels[k] = static_cast<std::uint8_t>(digits % kLevels);
      if (digits % kLevels != 0) ++result[i].signCount;
    }
  }
  return result;
}

// A level whose magnitude is 0 leaves its sign to the next one.
template <int kCategory>
bool ReadRegion(BitReader& reader, Word deviation, Word* coefficients) noexcept {
  constexpr const auto& kCodebook = kQuantiser<kCategory>;
  constexpr std::size_t kDimension = kCodebook.dimension;
  static constexpr PrefixCode kCode(kCodebook.tree);
  static constexpr auto kLevels = MakeLevels<kDimension, kCodebook.centroids.size()>();
  const auto magnitudes = Magnitudes(kCodebook.centroids, deviation);
  for (std::size_t i = 0; i < kRegionSize; i += kDimension) {
    const auto& vector = kLevels[static_cast<std::size_t>(kCode.Read(reader, kCodebook.tree))];
    if (reader.Left() < vector.signCount) return false;
    std::uint32_t signs = reader.Ahead();
    reader.Skip(vector.signCount);
    for (std::size_t k = 0; k < kDimension; ++k) {
      const Word magnitude = magnitudes[vector.levels[k]];
      const Long isNegative = signs >> 31 != 0 ? 0 : -1;
      coefficients[i + k] = static_cast<Word>((magnitude ^ isNegative) - isNegative);
      signs <<= magnitude != 0 ? 1 : 0;
    }
  }
  return true;
}

constexpr decltype(&ReadRegion<0>) kReadRegion[] = {ReadRegion<0>, ReadRegion<1>, ReadRegion<2>,
                                                    ReadRegion<3>, ReadRegion<4>, ReadRegion<5>,
                                                    ReadRegion<6>};

}  // namespace

bool ReadVectors(BitReader& reader, const Envelope& envelope, Categories& categories,
                 Samples& coefficients) noexcept {
  for (std::size_t i = 0; i < kRegions; ++i) {
    if (categories[i] == kNoVectors) continue;
    const auto read = kReadRegion[static_cast<std::size_t>(categories[i])];
    if (!read(reader, envelope.deviations[i], &coefficients[i * kRegionSize])) {
      std::fill(categories.begin() + static_cast<std::ptrdiff_t>(i), categories.end(), kNoVectors);
      return false;
    }
  }
  return true;
}

unsigned NoiseSource::Draw() noexcept {
  auto word = static_cast<std::uint16_t>(words_[0] + words_[3]);
  if ((word & 0x8000) != 0) ++word;
  words_ = {word, words_[0], words_[1], words_[2]};
  return word;
}

void NoiseSource::Fill(const Envelope& envelope, const Categories& categories,
                       Samples& coefficients) noexcept {
  constexpr std::size_t kFirstWithNoise = kNoVectors + 1 - kNoiseFactors.size();
  constexpr std::size_t kOneDraw = kRegionSize / 2;  // coefficients
  for (std::size_t region = 0; region < kRegions; ++region) {
    const auto category = static_cast<std::size_t>(categories[region]);
    if (category < kFirstWithNoise) continue;
    const Word level =
        Multiply(envelope.deviations[region], kNoiseFactors[category - kFirstWithNoise]);
    Word* const first = &coefficients[region * kRegionSize];
    if (category == kNoVectors) std::fill_n(first, kRegionSize, Word{0});
    for (std::size_t i = 0; i < kRegionSize;) {
      unsigned signs = Draw();
      for (const std::size_t end = i + kOneDraw; i < end; ++i) {
        if (first[i] != 0) continue;
        first[i] = static_cast<Word>((signs & 1) != 0 ? level : -level);
        signs >>= 1;
      }
    }
  }
}

}  // namespace Quorvex::g722_1
