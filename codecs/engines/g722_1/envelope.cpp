// The power of the first region stands as it is, the others as differences in prefix codes. From
// all of them follows how far the frame's numbers are shifted so that the transform has room.
#include "codecs/engines/g722_1/envelope.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "codecs/engines/g722_1/envelope_tables.h"

namespace Quorvex::g722_1 {
namespace {

constexpr int kLeastPower = -15;
constexpr int kMostPower = 24;

template <std::size_t... kIndices>
constexpr auto MakePowerCodes(std::index_sequence<kIndices...>) noexcept {
  return std::array{PrefixCode(kPowerTrees[kIndices])...};
}
constexpr auto kPowerCodes = MakePowerCodes(std::make_index_sequence<kPowerTrees.size()>());

Powers ReadPowers(BitReader& reader) noexcept {
  Powers powers;
  powers[0] = static_cast<int>(reader.Read(5)) - 7;
  for (std::size_t i = 1; i < kRegions; ++i) {
    powers[i] = powers[i - 1] + kPowerCodes[i - 1].Read(reader, kPowerTrees[i - 1]) - 12;
  }
  return powers;
}

// A damaged frame may hold powers outside the table.
fixed_point::Word Deviation(int power) noexcept {
  constexpr int kLast = static_cast<int>(kStandardDeviations.size()) - 1;
  return kStandardDeviations[static_cast<std::size_t>(std::clamp(power + 24, 0, kLast))];
}

// The most bits by which deviations can grow without the transform running out of range.
int MagnitudeShift(const Powers& powers) noexcept {
  int sum = 0;
  for (const int power : powers) sum += Deviation(power);
  int most = std::max(*std::ranges::max_element(powers) + 24, 0);
  int shift = 9;
  while (shift >= 0 && (sum >= 8 || most > 28)) {
    --shift;
    sum >>= 1;
    most -= 2;
  }
  return shift;
}

}  // namespace

Envelope ReadEnvelope(BitReader& reader) noexcept {
  Envelope envelope;
  envelope.powers = ReadPowers(reader);
  envelope.magnitudeShift = MagnitudeShift(envelope.powers);
  envelope.isValid = true;
  for (std::size_t i = 0; i < kRegions; ++i) {
    const int power = envelope.powers[i];
    envelope.deviations[i] = Deviation(power + 2 * envelope.magnitudeShift);
    if (power < kLeastPower || power > kMostPower) envelope.isValid = false;
  }
  return envelope;
}

}  // namespace Quorvex::g722_1
