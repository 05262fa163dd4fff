#include "codecs/engines/g723_1/convolution.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/block_filter.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

bool ProductsStayBelow(Long limit, const Word* vector, const Subframe& response) noexcept {
  const std::int64_t weights = SumOfMagnitudes(response.data(), response.size());
  return weights * Peak(vector, kSubframeSamples) < limit;
}

// Block by block, as early blocks need only the begin of the response.
Subframe Convolve(const Word* vector, const Subframe& response, int shift) noexcept {
  constexpr std::size_t kPadded =
      (kSubframeSamples + kFilterBlock - 1) / kFilterBlock * kFilterBlock;
  std::array<Word, kFilterBlock + kPadded> samples = {};  // the first block is before the vector
  std::copy_n(vector, kSubframeSamples, &samples[kFilterBlock]);
  std::array<Word, kPadded> taps = {};
  std::ranges::copy(response, taps.begin());
  std::array<Word, kPadded> filtered;
  for (std::size_t begin = 0; begin < kPadded; begin += kFilterBlock) {
    FilterBlocks(&samples[kFilterBlock + begin], taps.data(), begin + kFilterBlock, shift,
                 kFilterBlock, &filtered[begin]);
  }
  Subframe result;
  std::copy_n(filtered.begin(), kSubframeSamples, result.begin());
  return result;
}

}  // namespace Quorvex::g723_1
