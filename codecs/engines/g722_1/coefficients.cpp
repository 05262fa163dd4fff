#include "codecs/engines/g722_1/coefficients.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

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

// One code word holds a vector's levels, as digits of a number, the first the most significant. A
// sign follows for each that is not 0; those whose magnitude is 0 nevertheless leave their sign to
// the next.
template <int kCategory>
bool ReadRegion(BitReader& reader, Word deviation, Word* coefficients) noexcept {
  constexpr const auto& kCodebook = kQuantiser<kCategory>;
  static constexpr PrefixCode kCode(kCodebook.tree);
  constexpr int kLevels = static_cast<int>(kCodebook.centroids.size());
  constexpr std::size_t kDimension = kCodebook.dimension;
  const auto magnitudes = Magnitudes(kCodebook.centroids, deviation);
  for (std::size_t i = 0; i < kRegionSize; i += kDimension) {
    int digits = kCode.Read(reader);
    std::array<Word, kDimension> vector;
    int signCount = 0;
    for (std::size_t k = kDimension; k-- > 0;) {
      const int level = digits % kLevels;
      digits /= kLevels;
      vector[k] = magnitudes[static_cast<std::size_t>(level)];
      signCount += level != 0 ? 1 : 0;
    }
    if (reader.Left() < signCount) return false;
    std::uint32_t signs = reader.Ahead();
    reader.Skip(signCount);
    for (std::size_t k = 0; k < kDimension; ++k) {
      const Long isNegative = signs >> 31 != 0 ? 0 : -1;
      coefficients[i + k] = static_cast<Word>((vector[k] ^ isNegative) - isNegative);
      signs <<= vector[k] != 0 ? 1 : 0;
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
