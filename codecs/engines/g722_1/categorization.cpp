// One offset for all regions is found first, by halving steps. The categories that it gives are
// then changed, a region at a time, into a list of distributions from the most expensive to the
// cheapest; the frame's control number says how far along it the encoder went.
#include "codecs/engines/g722_1/categorization.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g722_1/categorization_tables.h"

namespace Quorvex::g722_1 {
namespace {

constexpr std::size_t kChanges = 15;

int ExpectedBits(int category) noexcept {
  return kExpectedBits[static_cast<std::size_t>(category)];
}
int ExpectedBits(const Categories& categories) noexcept {
  int sum = 0;
  for (const int category : categories) sum += ExpectedBits(category);
  return sum;
}

Categories AtOffset(const Powers& powers, int offset) noexcept {
  Categories categories;
  for (std::size_t i = 0; i < kRegions; ++i) {
    categories[i] = std::clamp((offset - powers[i]) >> 1, 0, kNoVectors);
  }
  return categories;
}

// The coarsest that is expected to leave no more than 32 bits over.
int FindOffset(const Powers& powers, int bits) noexcept {
  int offset = -32;
  for (int step = 32; step > 0; step /= 2) {
    if (ExpectedBits(AtOffset(powers, offset + step)) >= bits - 32) offset += step;
  }
  return offset;
}

// A set of categories that is moved a region and a category at a time.
class Balance {
 public:
  Balance(const Powers& powers, int offset) noexcept
      : categories_(AtOffset(powers, offset)), bits_(ExpectedBits(categories_)) {
    for (std::size_t i = 0; i < kRegions; ++i) {
      excess_[i] = offset - powers[i] - 2 * categories_[i];
    }
  }

  int Bits() const noexcept { return bits_; }
  const Categories& Set() const noexcept { return categories_; }

  // The first region of those that are quantised the most coarsely for their power, a category
  // finer.
  std::size_t MakeFiner() noexcept {
    std::size_t found = 0;
    int least = kNone;
    for (std::size_t i = 0; i < kRegions; ++i) {
      if (categories_[i] > 0 && excess_[i] < least) {
        least = excess_[i];
        found = i;
      }
    }
    Move(found, -1);
    return found;
  }

  // The last of those that are quantised the most finely, a category coarser.
  std::size_t MakeCoarser() noexcept {
    std::size_t found = 0;
    int most = -kNone;
    for (std::size_t i = kRegions; i-- > 0;) {
      if (categories_[i] < kNoVectors && excess_[i] > most) {
        most = excess_[i];
        found = i;
      }
    }
    Move(found, 1);
    return found;
  }

 private:
  static constexpr int kNone = 1000;  // powers stay within +-200

  void Move(std::size_t region, int by) noexcept {
    int& category = categories_[region];
    bits_ -= ExpectedBits(category);
    category += by;
    bits_ += ExpectedBits(category);
    excess_[region] -= 2 * by;
  }

  Categories categories_;
  std::array<int, kRegions> excess_;
  int bits_;
};

}  // namespace

Categories Categorize(const Powers& powers, int bits, int control) noexcept {
  if (bits > 320) bits = 320 + ((bits - 320) * 5 >> 3);
  const int offset = FindOffset(powers, bits);
  Balance fine(powers, offset);
  Balance coarse(powers, offset);
  // The regions changed on the way from the finest set to the coarsest. There always is one to
  // change: a change is of 16 bits at most, so the two totals are never more than 240 apart, and
  // bits are at least 263 and at most 514. All regions in category 0, 728 bits, would have to fall
  // short, or all in category 7, no bits, be too much.
  std::array<std::size_t, 2 * kChanges> changes{};
  std::size_t first = kChanges;
  std::size_t end = kChanges;
  for (std::size_t i = 0; i < kChanges; ++i) {
    if (fine.Bits() + coarse.Bits() <= 2 * bits) {
      changes[--first] = fine.MakeFiner();
    } else {
      changes[end++] = coarse.MakeCoarser();
    }
  }
  Categories categories = fine.Set();
  for (int i = 0; i < control; ++i) ++categories[changes[first++]];
  return categories;
}

}  // namespace Quorvex::g722_1
